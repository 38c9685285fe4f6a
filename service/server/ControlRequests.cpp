// SPDX-License-Identifier: GPL-3.0-or-later
#include "service/server/ControlRequests.h"

#include "service/server/DaemonEvent.h"
#include "service/server/RequestRouter.h"

namespace service {

ControlRequests::ControlRequests(const SessionContext& context) : m_Context(context) {}

void ControlRequests::addTo(RequestRouter& router) {
    router.route(*this, &ControlRequests::isCleaning);
    router.route(*this, &ControlRequests::event);
}

std::optional<DaemonIsServerCleanDataBaseReply> ControlRequests::isCleaning(
    const DaemonIsServerCleanDataBaseRequest& /*request*/) {
    DaemonIsServerCleanDataBaseReply reply;
    reply.isClean = m_Context.cleaner.isRunning();
    return reply;
}

void ControlRequests::event(const EventMessage& message) {
    if (message.eventId == static_cast<std::int32_t>(DaemonEvent::CleanHistory)) {
        m_Context.cleaner.start();
    } else if (message.eventId == static_cast<std::int32_t>(DaemonEvent::ConfigurationChanged)) {
        m_Context.configurationChanged();
    }
}

}  // namespace service
