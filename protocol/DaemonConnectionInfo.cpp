// SPDX-License-Identifier: GPL-3.0-or-later
#include "protocol/DaemonConnectionInfo.h"

#include "libs/sqlite/Query.h"
#include "libs/utils/src/StringUtils.h"

namespace {

enum Column {
    Id = 0,
    ApplicationId = 1,
    StartTime = 2,
    EndTime = 3,
    Direction = 4,
    SocketDomain = 5,
    SocketType = 6,
    SocketProtocol = 7,
    Received = 8,
    Sended = 9,
    RemoteAddress = 10,  // family, text, port
    LocalAddress = 13,   // family, text, port
};

IpAddress addressAt(SQLite::Query* query, int firstColumn) {
    IpAddress address =
        stringToIp(query->GetColumnAsString(firstColumn + 1), query->GetColumnAsInt(firstColumn));
    address.port = static_cast<std::uint16_t>(query->GetColumnAsInt(firstColumn + 2));
    return address;
}

}  // namespace

bool DaemonConnectionInfo::UpdateFromQuery(SQLite::Query* query) {
    if (query == nullptr) {
        return false;
    }
    id = query->GetColumnAsInt(Id);
    applicationId = query->GetColumnAsInt(ApplicationId);
    startTime = Time::fromString(query->GetColumnAsString(StartTime));
    endTime = Time::fromString(query->GetColumnAsString(EndTime));
    direction = query->GetColumnAsInt(Direction);
    socketDomain = query->GetColumnAsInt(SocketDomain);
    socketType = query->GetColumnAsInt(SocketType);
    socketProtocol = query->GetColumnAsInt(SocketProtocol);
    receivedBytes = query->GetColumnAsInt64(Received);
    sendedBytes = query->GetColumnAsInt64(Sended);
    remoteAddress = addressAt(query, RemoteAddress);
    localAddress = addressAt(query, LocalAddress);
    return true;
}
