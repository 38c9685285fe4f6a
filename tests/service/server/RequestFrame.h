// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <vector>

#include "protocol/BinarySerializer.h"
#include "protocol/MessageHeader.h"

namespace service {

inline std::vector<std::uint8_t> takeBytes(BinarySerializer& serializer) {
    std::vector<std::uint8_t> bytes(static_cast<std::size_t>(serializer.GetCurrentDataSize()));
    serializer.ReadData(bytes.data(), static_cast<int>(bytes.size()));
    return bytes;
}

/** What a front end sends before a body. */
inline std::vector<std::uint8_t> frameHeader(std::int32_t messageId, std::int32_t messageType,
                                             std::int32_t dataSize) {
    MessageHeader header;
    header.messageId = messageId;
    header.messageType = messageType;
    header.dataSize = dataSize;
    BinarySerializer serializer;
    header.SerializeTo(serializer);
    return takeBytes(serializer);
}

/** A request's whole frame. */
template <class Request>
std::vector<std::uint8_t> requestFrame(std::int32_t messageId, const Request& request) {
    BinarySerializer serializer;
    request.SerializeTo(serializer);
    const std::vector<std::uint8_t> body = takeBytes(serializer);
    std::vector<std::uint8_t> frame =
        frameHeader(messageId, Request::MessageType, static_cast<std::int32_t>(body.size()));
    frame.insert(frame.end(), body.begin(), body.end());
    return frame;
}

}  // namespace service
