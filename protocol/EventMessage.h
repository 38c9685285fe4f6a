// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <tuple>

#include "protocol/WireMessage.h"

/** The body of an event, in either direction. Its frame is told by the type -1. */
struct EventMessage : WireMessage<EventMessage> {
    static constexpr int MessageType = -1;

    std::int32_t eventId = 0;
    std::int32_t param = 0;

    template <class Self>
    static auto Fields(Self& self) {
        return std::tie(self.eventId, self.param);
    }
};
