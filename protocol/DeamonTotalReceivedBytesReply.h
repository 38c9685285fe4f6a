// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <tuple>

#include "protocol/WireMessage.h"

/** Answers `DaemonTotalReceivedBytesRequest`. */
struct DeamonTotalReceivedBytesReply : WireMessage<DeamonTotalReceivedBytesReply> {
    static constexpr int MessageType = 4;

    std::int64_t bytes = 0;

    template <class Self>
    static auto Fields(Self& self) {
        return std::tie(self.bytes);
    }
};
