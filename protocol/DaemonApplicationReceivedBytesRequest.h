// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <tuple>

#include "libs/utils/src/Time.h"
#include "protocol/WireMessage.h"

/** Asks how many bytes one application had received up to a time. */
struct DaemonApplicationReceivedBytesRequest : WireMessage<DaemonApplicationReceivedBytesRequest> {
    static constexpr int MessageType = 7;

    std::int32_t applicationId = 0;
    Time toTime;                      ///< local time, inclusive
    std::int32_t socketProtocol = 0;  ///< 6 TCP, 17 UDP, -1 all

    template <class Self>
    static auto Fields(Self& self) {
        return std::tie(self.applicationId, self.toTime, self.socketProtocol);
    }
};
