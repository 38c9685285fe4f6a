// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <optional>

#include "protocol/BinarySerializer.h"
#include "protocol/MessageHeader.h"
#include "service/server/ByteBuffer.h"
#include "service/server/DaemonEvent.h"

namespace service {

/** The frames that wait to be sent to one client, numbered from 0 in the order in which they were put in. */
class Outbox {
  public:
    /** Answers the request `requestId`; without a message by an empty body, which a client reads as "there is
     * none". */
    template <class Reply>
    void putReply(std::int32_t requestId, const std::optional<Reply>& reply) {
        BinarySerializer body;
        if (reply) {
            reply->SerializeTo(body);
        }
        putFrame(Reply::MessageType, requestId, body);
    }

    /** Answers a request that is not understood. */
    void putEmptyReply(std::int32_t requestId);

    void putEvent(DaemonEvent event, std::int32_t param);

    ByteBuffer& buffer() { return m_Buffer; }
    std::size_t size() const { return m_Buffer.size(); }

  private:
    void putFrame(std::int32_t messageType, std::int32_t replyToId, BinarySerializer& body);
    void drainIntoBuffer(BinarySerializer& serializer);

    ByteBuffer m_Buffer;
    std::uint32_t m_NextMessageId = 0;  // unsigned, so that it wraps
};

}  // namespace service
