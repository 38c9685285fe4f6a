// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <tuple>

#include "protocol/WireMessage.h"

/** Asks for the sums over all applications; answered with `DaemonTotalStatisticInfo`. */
struct DaemonTotalStatisticInfoRequest : WireMessage<DaemonTotalStatisticInfoRequest> {
    static constexpr int MessageType = 11;

    template <class Self>
    static auto Fields(Self& /*self*/) {
        return std::tie();
    }
};
