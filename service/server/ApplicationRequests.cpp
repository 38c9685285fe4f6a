// SPDX-License-Identifier: GPL-3.0-or-later
#include "service/server/ApplicationRequests.h"

#include "service/server/RequestRouter.h"
#include "service/server/SortCodes.h"
#include "service/server/WireRecords.h"

namespace service {

ApplicationRequests::ApplicationRequests(const SessionContext& context) : m_Context(context) {}

void ApplicationRequests::addTo(RequestRouter& router) {
    router.route(*this, &ApplicationRequests::create);
    router.route(*this, &ApplicationRequests::setParameters);
    router.route(*this, &ApplicationRequests::count);
    router.route(*this, &ApplicationRequests::row);
    router.route(*this, &ApplicationRequests::byId);
    router.route(*this, &ApplicationRequests::remove);
}

std::optional<DaemonCreateApplicationIteratorReply> ApplicationRequests::create(
    const DaemonCreateApplicationIteratorRequest& /*request*/) {
    DaemonCreateApplicationIteratorReply reply;
    reply.iteratorId = m_Cursors.create(m_Context.ledger, m_Context.textOrder);
    return reply;
}

void ApplicationRequests::setParameters(const DaemonSetApplicatonsIteratorParametersRequest& request) {
    if (ApplicationsCursor* cursor = m_Cursors.find(request.iteratorId)) {
        cursor->sortBy(applicationSortField(request.sortField), sortDirection(request.sortDirection));
    }
}

std::optional<DaemonGetCountApplicationsReply> ApplicationRequests::count(
    const DaemonGetCountApplicationsRequest& request) {
    DaemonGetCountApplicationsReply reply;
    if (ApplicationsCursor* cursor = m_Cursors.find(request.iteratorId)) {
        reply.count = static_cast<std::int32_t>(cursor->count());
    }
    return reply;
}

std::optional<DaemonApplicationInfo> ApplicationRequests::row(
    const DaemonGetApplicationInfoRequest& request) {
    ApplicationsCursor* cursor = m_Cursors.find(request.iteratorId);
    const std::optional<ApplicationId> id = cursor != nullptr ? cursor->idAt(request.index) : std::nullopt;
    return id ? info(*id) : std::nullopt;
}

std::optional<DaemonApplicationInfo> ApplicationRequests::byId(
    const DaemonApplicationInfoFromIdRequest& request) {
    return info(request.applicationId);
}

void ApplicationRequests::remove(const DaemonDeleteApplicationsIteratorRequest& request) {
    m_Cursors.erase(request.iteratorId);
}

std::optional<DaemonApplicationInfo> ApplicationRequests::info(ApplicationId id) const {
    const std::optional<ApplicationRecord> application = m_Context.ledger.application(id);
    return application ? std::optional(toWire(*application)) : std::nullopt;
}

}  // namespace service
