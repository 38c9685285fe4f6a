// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <tuple>

#include "protocol/WireMessage.h"

/** Asks how many rows a connections cursor has. */
struct DaemonGetCountConnectionsRequest : WireMessage<DaemonGetCountConnectionsRequest> {
    static constexpr int MessageType = 23;

    std::int32_t iteratorId = 0;

    template <class Self>
    static auto Fields(Self& self) {
        return std::tie(self.iteratorId);
    }
};
