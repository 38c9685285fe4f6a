// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <tuple>

#include "protocol/WireMessage.h"

/** Answers `DaemonGetCountConnectionsRequest`. */
struct DaemonGetCountConnectionsReply : WireMessage<DaemonGetCountConnectionsReply> {
    static constexpr int MessageType = 24;

    std::int32_t count = 0;

    template <class Self>
    static auto Fields(Self& self) {
        return std::tie(self.count);
    }
};
