// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <tuple>

#include "protocol/WireMessage.h"

/** Answers `DaemonGetCountApplicationsRequest`. */
struct DaemonGetCountApplicationsReply : WireMessage<DaemonGetCountApplicationsReply> {
    static constexpr int MessageType = 17;

    std::int32_t count = 0;

    template <class Self>
    static auto Fields(Self& self) {
        return std::tie(self.count);
    }
};
