// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <tuple>

#include "protocol/WireMessage.h"

/** Ends a connections cursor; not answered. */
struct DaemonDeleteConnectionsIteratorRequest : WireMessage<DaemonDeleteConnectionsIteratorRequest> {
    static constexpr int MessageType = 26;

    std::int32_t iteratorId = 0;

    template <class Self>
    static auto Fields(Self& self) {
        return std::tie(self.iteratorId);
    }
};
