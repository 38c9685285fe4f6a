// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <tuple>

#include "protocol/WireMessage.h"

/** Asks for a new connections cursor. */
struct DaemonCreateConnectionsIteratorRequest : WireMessage<DaemonCreateConnectionsIteratorRequest> {
    static constexpr int MessageType = 20;

    template <class Self>
    static auto Fields(Self& /*self*/) {
        return std::tie();
    }
};
