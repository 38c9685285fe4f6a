// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <tuple>

#include "protocol/WireMessage.h"

/** Asks for one application; answered with `DaemonApplicationInfo`. */
struct DaemonApplicationInfoFromIdRequest : WireMessage<DaemonApplicationInfoFromIdRequest> {
    static constexpr int MessageType = 12;

    std::int32_t applicationId = 0;

    template <class Self>
    static auto Fields(Self& self) {
        return std::tie(self.applicationId);
    }
};
