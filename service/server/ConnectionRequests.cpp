// SPDX-License-Identifier: GPL-3.0-or-later
#include "service/server/ConnectionRequests.h"

#include <utility>

#include "service/server/LocalCalendar.h"
#include "service/server/RequestRouter.h"
#include "service/server/SortCodes.h"
#include "service/server/WireRecords.h"

namespace service {

namespace {

constexpr std::int32_t everything = -1;

std::optional<std::int32_t> filterOn(std::int32_t value) {
    return value == everything ? std::nullopt : std::optional(value);
}

ConnectionQuery queryOf(const DaemonSetConnectionsIteratorParametersRequest& request) {
    ConnectionQuery query;
    query.from = LocalCalendar::toMoment(request.startTime);
    query.to = LocalCalendar::toMoment(request.endTime);
    query.application = filterOn(request.applicationId);
    query.socketProtocol = filterOn(request.socketProtocol);
    query.sortField = connectionSortField(request.sortField);
    query.sortDirection = sortDirection(request.sortDirection);
    return query;
}

}  // namespace

ConnectionRequests::ConnectionRequests(const SessionContext& context, std::function<void()> wake)
    : m_Context(context), m_Wake(std::move(wake)) {}

void ConnectionRequests::addTo(RequestRouter& router) {
    router.route(*this, &ConnectionRequests::create);
    router.route(*this, &ConnectionRequests::setParameters);
    router.route(*this, &ConnectionRequests::count);
    router.route(*this, &ConnectionRequests::row);
    router.route(*this, &ConnectionRequests::remove);
}

std::optional<DaemonCreateConnectionsIteratorReply> ConnectionRequests::create(
    const DaemonCreateConnectionsIteratorRequest& /*request*/) {
    DaemonCreateConnectionsIteratorReply reply;
    reply.iteratorId = m_Cursors.create(m_Context.orders, m_Wake);
    return reply;
}

void ConnectionRequests::setParameters(const DaemonSetConnectionsIteratorParametersRequest& request) {
    if (ConnectionsCursor* cursor = m_Cursors.find(request.iteratorId)) {
        cursor->select(queryOf(request));
    }
}

Later<std::optional<DaemonGetCountConnectionsReply>> ConnectionRequests::count(
    const DaemonGetCountConnectionsRequest& request) {
    DaemonGetCountConnectionsReply reply;
    if (ConnectionsCursor* cursor = m_Cursors.find(request.iteratorId)) {
        const Later<std::size_t> count = cursor->count();
        if (!count.isThere) {
            return {};
        }
        reply.count = static_cast<std::int32_t>(count.value);
    }
    return {.isThere = true, .value = reply};
}

Later<std::optional<DaemonConnectionInfo>> ConnectionRequests::row(
    const DaemonGetConnectionInfoRequest& request) {
    ConnectionsCursor* cursor = m_Cursors.find(request.iteratorId);
    if (cursor == nullptr) {
        return {.isThere = true};
    }
    const Later<std::optional<ConnectionId>> id = cursor->idAt(request.index);
    if (!id.isThere) {
        return {};
    }
    return {.isThere = true, .value = id.value ? info(*id.value) : std::nullopt};
}

void ConnectionRequests::remove(const DaemonDeleteConnectionsIteratorRequest& request) {
    m_Cursors.erase(request.iteratorId);
}

/** As the ledger knows it while it is alive, as the history keeps it after that. */
std::optional<DaemonConnectionInfo> ConnectionRequests::info(ConnectionId id) {
    if (const std::optional<ConnectionRecord> alive = m_Context.ledger.liveConnection(id, m_Context.now())) {
        return toWire(*alive);
    }
    DaemonConnectionInfo info;
    return m_Context.history.connection(id, info) ? std::optional(info) : std::nullopt;
}

}  // namespace service
