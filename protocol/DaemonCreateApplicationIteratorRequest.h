// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <tuple>

#include "protocol/WireMessage.h"

/** Asks for a new applications cursor. */
struct DaemonCreateApplicationIteratorRequest : WireMessage<DaemonCreateApplicationIteratorRequest> {
    static constexpr int MessageType = 13;

    template <class Self>
    static auto Fields(Self& /*self*/) {
        return std::tie();
    }
};
