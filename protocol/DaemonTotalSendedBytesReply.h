// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <tuple>

#include "protocol/WireMessage.h"

/** Answers `DaemonTotalSendedBytesRequest`. */
struct DaemonTotalSendedBytesReply : WireMessage<DaemonTotalSendedBytesReply> {
    static constexpr int MessageType = 6;

    std::int64_t bytes = 0;

    template <class Self>
    static auto Fields(Self& self) {
        return std::tie(self.bytes);
    }
};
