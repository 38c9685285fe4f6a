// SPDX-License-Identifier: GPL-3.0-or-later
#include "service/server/ClientSession.h"

#include <utility>

namespace service {

ClientSession::ClientSession(const SessionContext& context, std::function<void()> wake)
    : m_Applications(context),
      m_Connections(context, std::move(wake)),
      m_Totals(context),
      m_Control(context) {
    m_Applications.addTo(m_Router);
    m_Connections.addTo(m_Router);
    m_Totals.addTo(m_Router);
    m_Control.addTo(m_Router);
}

}  // namespace service
