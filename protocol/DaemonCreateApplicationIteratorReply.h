// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <tuple>

#include "protocol/WireMessage.h"

/** Answers `DaemonCreateApplicationIteratorRequest`. */
struct DaemonCreateApplicationIteratorReply : WireMessage<DaemonCreateApplicationIteratorReply> {
    static constexpr int MessageType = 14;

    std::int32_t iteratorId = 0;

    template <class Self>
    static auto Fields(Self& self) {
        return std::tie(self.iteratorId);
    }
};
