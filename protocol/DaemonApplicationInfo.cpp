// SPDX-License-Identifier: GPL-3.0-or-later
#include "protocol/DaemonApplicationInfo.h"

#include "libs/sqlite/Query.h"

namespace {

enum Column {
    Id = 0,
    Name = 1,
    FullPath = 2,
    TcpSended = 3,
    TcpReceived = 4,
    UdpSended = 5,
    UdpReceived = 6,
    OtherSended = 7,
    OtherReceived = 8,
    StartTime = 9,
    EndTime = 10,
};

}  // namespace

bool DaemonApplicationInfo::UpdateFromQuery(SQLite::Query* query) {
    if (query == nullptr) {
        return false;
    }
    id = query->GetColumnAsInt(Id);
    name = query->GetColumnAsString(Name);
    fullPath = query->GetColumnAsString(FullPath);
    tcpSendedBytes = query->GetColumnAsInt64(TcpSended);
    tcpReceivedBytes = query->GetColumnAsInt64(TcpReceived);
    udpSendedBytes = query->GetColumnAsInt64(UdpSended);
    udpReceivedBytes = query->GetColumnAsInt64(UdpReceived);
    totalSendedBytes = tcpSendedBytes + udpSendedBytes + query->GetColumnAsInt64(OtherSended);
    totalReceivedBytes = tcpReceivedBytes + udpReceivedBytes + query->GetColumnAsInt64(OtherReceived);
    startTime = Time::fromString(query->GetColumnAsString(StartTime));
    endTime = Time::fromString(query->GetColumnAsString(EndTime));
    return true;
}
