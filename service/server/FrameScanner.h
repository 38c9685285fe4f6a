// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "protocol/MessageHeader.h"

namespace service {

/** Upper bound for the body of a request, in bytes; the longest that a front end sends has 68. */
inline constexpr std::int32_t maxRequestBodySize = 4096;

/** What the front of a byte stream holds. */
struct ScannedFrame {
    enum class Kind {
        Incomplete,  ///< more bytes are needed; nothing is consumed
        Bad,  ///< its length is negative or above `maxRequestBodySize`: the stream can't be followed any more
        Message,  ///< a whole frame
    };

    Kind kind = Kind::Incomplete;
    MessageHeader header;                ///< filled for `Bad` and `Message`
    std::span<const std::uint8_t> body;  ///< of a `Message`; points into the scanned bytes
    std::size_t consumed = 0;            ///< bytes that a `Message` takes, header included
};

/** Looks at the first frame of `bytes`; keeps nothing. */
ScannedFrame scanFrame(std::span<const std::uint8_t> bytes);

}  // namespace service
