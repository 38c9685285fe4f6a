// SPDX-License-Identifier: GPL-3.0-or-later
#include "service/server/ClientSession.h"

namespace service {

ClientSession::ClientSession(const SessionContext& context)
    : m_Applications(context), m_Connections(context), m_Totals(context), m_Control(context) {
    m_Applications.addTo(m_Router);
    m_Connections.addTo(m_Router);
    m_Totals.addTo(m_Router);
    m_Control.addTo(m_Router);
}

}  // namespace service
