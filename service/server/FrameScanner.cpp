// SPDX-License-Identifier: GPL-3.0-or-later
#include "service/server/FrameScanner.h"

#include "protocol/BinarySerializer.h"

namespace service {

namespace {

constexpr std::size_t headerSize = MessageHeader::SerializedSize();

}  // namespace

ScannedFrame scanFrame(std::span<const std::uint8_t> bytes) {
    ScannedFrame frame;
    BinarySerializer header;
    if (bytes.size() < headerSize || !header.WriteData(bytes.data(), headerSize) ||
        !frame.header.UnserializeFrom(header)) {
        return frame;
    }
    if (frame.header.dataSize < 0 || frame.header.dataSize > maxRequestBodySize) {
        frame.kind = ScannedFrame::Kind::Bad;
        return frame;
    }
    const auto bodySize = static_cast<std::size_t>(frame.header.dataSize);
    if (bytes.size() - headerSize >= bodySize) {
        frame.kind = ScannedFrame::Kind::Message;
        frame.body = bytes.subspan(headerSize, bodySize);
        frame.consumed = headerSize + bodySize;
    }
    return frame;
}

}  // namespace service
