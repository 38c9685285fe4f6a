// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <tuple>

#include "protocol/WireMessage.h"

/** Ends an applications cursor; not answered. */
struct DaemonDeleteApplicationsIteratorRequest : WireMessage<DaemonDeleteApplicationsIteratorRequest> {
    static constexpr int MessageType = 19;

    std::int32_t iteratorId = 0;

    template <class Self>
    static auto Fields(Self& self) {
        return std::tie(self.iteratorId);
    }
};
