// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <tuple>

#include "libs/utils/src/Time.h"
#include "protocol/WireMessage.h"

/** Sets filter and order of a connections cursor; not answered. The direction stands before the field. */
struct DaemonSetConnectionsIteratorParametersRequest
    : WireMessage<DaemonSetConnectionsIteratorParametersRequest> {
    static constexpr int MessageType = 22;

    std::int32_t iteratorId = 0;
    Time startTime;                   ///< local time
    Time endTime;                     ///< local time
    std::int32_t applicationId = 0;   ///< -1 all
    std::int32_t socketProtocol = 0;  ///< 6 TCP, 17 UDP, -1 all
    std::int32_t sortDirection = 0;   ///< 1 ascending, 0 descending, 2 none
    std::int32_t sortField =
        0;  ///< 0 start, 1 end, 2 direction, 3 received, 4 sent, 5 local, 6 remote, 7 none

    template <class Self>
    static auto Fields(Self& self) {
        return std::tie(self.iteratorId, self.startTime, self.endTime, self.applicationId,
                        self.socketProtocol, self.sortDirection, self.sortField);
    }
};
