// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <tuple>

#include "protocol/WireMessage.h"

/** Asks for a row of a connections cursor; answered with `DaemonConnectionInfo`. */
struct DaemonGetConnectionInfoRequest : WireMessage<DaemonGetConnectionInfoRequest> {
    static constexpr int MessageType = 25;

    std::int32_t iteratorId = 0;
    std::int32_t index = 0;  ///< from 0

    template <class Self>
    static auto Fields(Self& self) {
        return std::tie(self.iteratorId, self.index);
    }
};
