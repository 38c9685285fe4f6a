// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <tuple>

#include "libs/utils/src/Time.h"
#include "protocol/WireMessage.h"

/** Asks how many bytes all applications had sent up to a time. */
struct DaemonTotalSendedBytesRequest : WireMessage<DaemonTotalSendedBytesRequest> {
    static constexpr int MessageType = 5;

    Time toTime;                      ///< local time, inclusive
    std::int32_t socketProtocol = 0;  ///< 6 TCP, 17 UDP, -1 all

    template <class Self>
    static auto Fields(Self& self) {
        return std::tie(self.toTime, self.socketProtocol);
    }
};
