// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <tuple>

#include "protocol/WireMessage.h"

/** Asks whether the daemon is cleaning its database. */
struct DaemonIsServerCleanDataBaseRequest : WireMessage<DaemonIsServerCleanDataBaseRequest> {
    static constexpr int MessageType = 27;

    template <class Self>
    static auto Fields(Self& /*self*/) {
        return std::tie();
    }
};
