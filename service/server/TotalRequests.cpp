// SPDX-License-Identifier: GPL-3.0-or-later
#include "service/server/TotalRequests.h"

#include "service/server/LocalCalendar.h"
#include "service/server/RequestRouter.h"
#include "service/server/WireRecords.h"

namespace service {

TotalRequests::TotalRequests(const SessionContext& context)
    : m_Ledger(context.ledger), m_Bytes(context.ledger, context.history, context.now) {}

void TotalRequests::addTo(RequestRouter& router) {
    router.route(*this, &TotalRequests::totals);
    router.route(*this, &TotalRequests::received);
    router.route(*this, &TotalRequests::sent);
    router.route(*this, &TotalRequests::applicationReceived);
    router.route(*this, &TotalRequests::applicationSent);
}

std::optional<DaemonTotalStatisticInfo> TotalRequests::totals(
    const DaemonTotalStatisticInfoRequest& /*request*/) {
    return toWire(m_Ledger.totals());
}

std::optional<DeamonTotalReceivedBytesReply> TotalRequests::received(
    const DaemonTotalReceivedBytesRequest& request) {
    DeamonTotalReceivedBytesReply reply;
    reply.bytes =
        m_Bytes.upTo(LocalCalendar::toMoment(request.toTime), std::nullopt, request.socketProtocol).received;
    return reply;
}

std::optional<DaemonTotalSendedBytesReply> TotalRequests::sent(const DaemonTotalSendedBytesRequest& request) {
    DaemonTotalSendedBytesReply reply;
    reply.bytes =
        m_Bytes.upTo(LocalCalendar::toMoment(request.toTime), std::nullopt, request.socketProtocol).sent;
    return reply;
}

std::optional<DaemonApplicationReceivedBytesReply> TotalRequests::applicationReceived(
    const DaemonApplicationReceivedBytesRequest& request) {
    DaemonApplicationReceivedBytesReply reply;
    reply.bytes =
        m_Bytes.upTo(LocalCalendar::toMoment(request.toTime), request.applicationId, request.socketProtocol)
            .received;
    return reply;
}

std::optional<DaemonApplicationSendedBytesReply> TotalRequests::applicationSent(
    const DaemonApplicationSendedBytesRequest& request) {
    DaemonApplicationSendedBytesReply reply;
    reply.bytes =
        m_Bytes.upTo(LocalCalendar::toMoment(request.toTime), request.applicationId, request.socketProtocol)
            .sent;
    return reply;
}

}  // namespace service
