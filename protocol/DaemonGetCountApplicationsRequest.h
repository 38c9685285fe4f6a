// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <tuple>

#include "protocol/WireMessage.h"

/** Asks how many rows an applications cursor has. */
struct DaemonGetCountApplicationsRequest : WireMessage<DaemonGetCountApplicationsRequest> {
    static constexpr int MessageType = 16;

    std::int32_t iteratorId = 0;

    template <class Self>
    static auto Fields(Self& self) {
        return std::tie(self.iteratorId);
    }
};
