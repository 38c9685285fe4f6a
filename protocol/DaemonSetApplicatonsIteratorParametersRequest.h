// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <tuple>

#include "protocol/WireMessage.h"

/** Sets the order of an applications cursor; not answered. The direction stands before the field. */
struct DaemonSetApplicatonsIteratorParametersRequest
    : WireMessage<DaemonSetApplicatonsIteratorParametersRequest> {
    static constexpr int MessageType = 15;

    std::int32_t iteratorId = 0;
    std::int32_t sortDirection = 0;  ///< 1 ascending, 0 descending, 2 none
    std::int32_t sortField = 0;      ///< 0 name, 1 path, 2 last activity, 3 received, 4 sent, 5 none

    template <class Self>
    static auto Fields(Self& self) {
        return std::tie(self.iteratorId, self.sortDirection, self.sortField);
    }
};
