// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <tuple>

#include "protocol/WireMessage.h"

/** Answers `DaemonIsServerCleanDataBaseRequest`. */
struct DaemonIsServerCleanDataBaseReply : WireMessage<DaemonIsServerCleanDataBaseReply> {
    static constexpr int MessageType = 28;

    bool isClean = false;  ///< true while it is being cleaned

    template <class Self>
    static auto Fields(Self& self) {
        return std::tie(self.isClean);
    }
};
