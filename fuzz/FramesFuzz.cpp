// SPDX-License-Identifier: GPL-3.0-or-later
// The daemon takes whatever a client sends: a stream is scanned frame by frame.

#include <cstdlib>

#include "service/server/FrameScanner.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::span<const std::uint8_t> rest(data, size);
    for (;;) {
        const service::ScannedFrame frame = service::scanFrame(rest);
        if (frame.kind != service::ScannedFrame::Kind::Message) {
            return 0;
        }
        if (frame.consumed != frame.body.size() + 20 || frame.consumed > rest.size() ||
            frame.body.size() > service::maxRequestBodySize) {
            std::abort();
        }
        rest = rest.subspan(frame.consumed);
    }
}
