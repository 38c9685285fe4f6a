// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <string>
#include <tuple>

#include "libs/utils/src/Time.h"
#include "protocol/WireMessage.h"

namespace SQLite {
class Query;
}

/** One monitored application. */
struct DaemonApplicationInfo : WireMessage<DaemonApplicationInfo> {
    static constexpr int MessageType = 1;

    std::int32_t id = 0;
    std::string name;      ///< UTF-8
    std::string fullPath;  ///< of the executable; empty for the kernel
    std::int64_t totalReceivedBytes = 0;
    std::int64_t totalSendedBytes = 0;
    std::int64_t tcpReceivedBytes = 0;
    std::int64_t tcpSendedBytes = 0;
    std::int64_t udpReceivedBytes = 0;
    std::int64_t udpSendedBytes = 0;
    Time startTime;  ///< first activity, local time
    Time endTime;    ///< last activity, local time

    template <class Self>
    static auto Fields(Self& self) {
        return std::tie(self.id, self.name, self.fullPath, self.totalReceivedBytes, self.totalSendedBytes,
                        self.tcpReceivedBytes, self.tcpSendedBytes, self.udpReceivedBytes,
                        self.udpSendedBytes, self.startTime, self.endTime);
    }

    /**
     * Fills the record from the row on which `query` stands (column order: see the source). False for a null
     * query.
     */
    bool UpdateFromQuery(SQLite::Query* query);
};
