// SPDX-License-Identifier: GPL-3.0-or-later
#include "service/server/Outbox.h"

#include <algorithm>
#include <array>

#include "protocol/EventMessage.h"

namespace service {

namespace {

constexpr std::int32_t noRequest = -1;
constexpr std::int32_t unknownMessageType = 0;  // any type but that of events makes a frame a reply

}  // namespace

void Outbox::putEmptyReply(std::int32_t requestId) {
    BinarySerializer empty;
    putFrame(unknownMessageType, requestId, empty);
}

void Outbox::putEvent(DaemonEvent event, std::int32_t param) {
    EventMessage message;
    message.eventId = static_cast<std::int32_t>(event);
    message.param = param;
    BinarySerializer body;
    message.SerializeTo(body);
    putFrame(EventMessage::MessageType, noRequest, body);
}

void Outbox::putFrame(std::int32_t messageType, std::int32_t replyToId, BinarySerializer& body) {
    MessageHeader header;
    header.messageId = static_cast<std::int32_t>(m_NextMessageId++);
    header.replyToId = replyToId;
    header.messageType = messageType;
    header.dataSize = body.GetCurrentDataSize();
    BinarySerializer serializedHeader;
    header.SerializeTo(serializedHeader);
    drainIntoBuffer(serializedHeader);
    drainIntoBuffer(body);
}

void Outbox::drainIntoBuffer(BinarySerializer& serializer) {
    std::array<std::uint8_t, 512> chunk;
    while (serializer.GetCurrentDataSize() > 0) {
        const int count = std::min(serializer.GetCurrentDataSize(), static_cast<int>(chunk.size()));
        serializer.ReadData(chunk.data(), count);
        m_Buffer.append(std::span(chunk).first(static_cast<std::size_t>(count)));
    }
}

}  // namespace service
