// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <tuple>

#include "protocol/WireMessage.h"

/** What stands before every body on the link: 20 bytes. */
struct MessageHeader : WireMessage<MessageHeader> {
    std::int32_t moduleId = 0;     ///< addressee on the daemon's side; the front end sends 0
    std::int32_t messageId = 0;    ///< the sender's sequence number of this frame
    std::int32_t replyToId = -1;   ///< in a reply the `messageId` of its request, else -1
    std::int32_t messageType = 0;  ///< type number of the body; -1 marks an event
    std::int32_t dataSize = 0;     ///< bytes of the body that follows

    static constexpr int SerializedSize() { return 20; }

    template <class Self>
    static auto Fields(Self& self) {
        return std::tie(self.moduleId, self.messageId, self.replyToId, self.messageType, self.dataSize);
    }
};
