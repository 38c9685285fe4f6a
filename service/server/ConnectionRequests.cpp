// SPDX-License-Identifier: GPL-3.0-or-later
#include "service/server/ConnectionRequests.h"

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

ConnectionRequests::ConnectionRequests(const SessionContext& context) : m_Context(context) {}

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
    reply.iteratorId = m_Cursors.create(m_Context.history);
    return reply;
}

void ConnectionRequests::setParameters(const DaemonSetConnectionsIteratorParametersRequest& request) {
    if (ConnectionsCursor* cursor = m_Cursors.find(request.iteratorId)) {
        cursor->select(queryOf(request));
    }
}

std::optional<DaemonGetCountConnectionsReply> ConnectionRequests::count(
    const DaemonGetCountConnectionsRequest& request) {
    DaemonGetCountConnectionsReply reply;
    if (ConnectionsCursor* cursor = m_Cursors.find(request.iteratorId)) {
        reply.count = static_cast<std::int32_t>(cursor->count());
        limitHeldRows(*cursor);
    }
    return reply;
}

std::optional<DaemonConnectionInfo> ConnectionRequests::row(const DaemonGetConnectionInfoRequest& request) {
    ConnectionsCursor* cursor = m_Cursors.find(request.iteratorId);
    if (cursor == nullptr) {
        return std::nullopt;
    }
    const std::optional<ConnectionId> id = cursor->idAt(request.index);
    limitHeldRows(*cursor);
    return id ? info(*id) : std::nullopt;
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

void ConnectionRequests::limitHeldRows(const ConnectionsCursor& inUse) {
    std::size_t held = 0;
    m_Cursors.forEach([&held](const ConnectionsCursor& cursor) { held += cursor.heldRows(); });
    if (held <= maxHeldRows) {
        return;
    }
    m_Cursors.forEach([&inUse](ConnectionsCursor& cursor) {
        if (&cursor != &inUse) {
            cursor.letGo();
        }
    });
}

}  // namespace service
