// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <tuple>

#include "protocol/WireMessage.h"

/** Answers `DaemonCreateConnectionsIteratorRequest`. */
struct DaemonCreateConnectionsIteratorReply : WireMessage<DaemonCreateConnectionsIteratorReply> {
    static constexpr int MessageType = 21;

    std::int32_t iteratorId = 0;

    template <class Self>
    static auto Fields(Self& self) {
        return std::tie(self.iteratorId);
    }
};
