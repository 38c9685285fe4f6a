// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <tuple>

#include "libs/utils/src/Time.h"
#include "protocol/WireMessage.h"

/** The sums over all applications. */
struct DaemonTotalStatisticInfo : WireMessage<DaemonTotalStatisticInfo> {
    static constexpr int MessageType = 29;

    std::int64_t totalReceivedBytes = 0;
    std::int64_t totalSendedBytes = 0;
    std::int64_t tcpReceivedBytes = 0;
    std::int64_t tcpSendedBytes = 0;
    std::int64_t udpReceivedBytes = 0;
    std::int64_t udpSendedBytes = 0;
    Time startTime;  ///< when counting began, local time

    template <class Self>
    static auto Fields(Self& self) {
        return std::tie(self.totalReceivedBytes, self.totalSendedBytes, self.tcpReceivedBytes,
                        self.tcpSendedBytes, self.udpReceivedBytes, self.udpSendedBytes, self.startTime);
    }
};
