// SPDX-License-Identifier: GPL-3.0-or-later
#include "service/server/WireRecords.h"

#include "service/server/LocalCalendar.h"

namespace service {

namespace {

/** Fills the six counters that the records of applications and of totals have in common. */
template <class Info>
void setCounters(Info& info, const Counters& counters) {
    const ByteCount total = counters.total();
    info.totalReceivedBytes = total.received;
    info.totalSendedBytes = total.sent;
    info.tcpReceivedBytes = counters[ProtocolClass::Tcp].received;
    info.tcpSendedBytes = counters[ProtocolClass::Tcp].sent;
    info.udpReceivedBytes = counters[ProtocolClass::Udp].received;
    info.udpSendedBytes = counters[ProtocolClass::Udp].sent;
}

}  // namespace

DaemonApplicationInfo toWire(const ApplicationRecord& application) {
    DaemonApplicationInfo info;
    info.id = application.id;
    info.name = application.name;
    info.fullPath = application.path;
    setCounters(info, application.counters);
    info.startTime = LocalCalendar::fromMoment(application.firstSeen);
    info.endTime = LocalCalendar::fromMoment(application.lastSeen);
    return info;
}

DaemonConnectionInfo toWire(const ConnectionRecord& connection) {
    DaemonConnectionInfo info;
    info.id = connection.id;
    info.applicationId = connection.applicationId;
    info.startTime = LocalCalendar::fromMoment(connection.start);
    info.endTime = LocalCalendar::fromMoment(connection.end);
    info.direction = static_cast<std::int32_t>(connection.direction);
    info.socketDomain = connection.socketDomain;
    info.socketType = connection.socketType;
    info.socketProtocol = connection.socketProtocol;
    info.receivedBytes = connection.bytes.received;
    info.sendedBytes = connection.bytes.sent;
    info.remoteAddress = connection.remote;
    info.localAddress = connection.local;
    return info;
}

DaemonTotalStatisticInfo toWire(const TotalsRecord& totals) {
    DaemonTotalStatisticInfo info;
    setCounters(info, totals.counters);
    info.startTime = LocalCalendar::fromMoment(totals.start);
    return info;
}

}  // namespace service
