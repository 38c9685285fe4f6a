// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <tuple>

#include "libs/utils/src/IpAddress.h"
#include "libs/utils/src/Time.h"
#include "protocol/WireMessage.h"

namespace SQLite {
class Query;
}

/** One network connection of an application. Its body always has 136 bytes. */
struct DaemonConnectionInfo : WireMessage<DaemonConnectionInfo> {
    static constexpr int MessageType = 2;

    std::int32_t id = 0;
    std::int32_t applicationId = 0;
    Time startTime;                 ///< opened, local time
    Time endTime;                   ///< closed or last seen, local time
    std::int32_t direction = 0;     ///< 0 inbound, 1 outbound, 2 unknown
    std::int32_t socketDomain = 0;  ///< address family
    std::int32_t socketType = 0;
    std::int32_t socketProtocol = 0;  ///< 6 TCP, 17 UDP, ...
    std::int64_t receivedBytes = 0;
    std::int64_t sendedBytes = 0;
    IpAddress remoteAddress;
    IpAddress localAddress;

    template <class Self>
    static auto Fields(Self& self) {
        return std::tie(self.id, self.applicationId, self.startTime, self.endTime, self.direction,
                        self.socketDomain, self.socketType, self.socketProtocol, self.receivedBytes,
                        self.sendedBytes, self.remoteAddress, self.localAddress);
    }

    /**
     * Fills the record from the row on which `query` stands (column order: see the source). False for a null
     * query.
     */
    bool UpdateFromQuery(SQLite::Query* query);
};
