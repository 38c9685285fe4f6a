// SPDX-License-Identifier: GPL-3.0-or-later
#include "service/server/FrameScanner.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "protocol/DaemonSetConnectionsIteratorParametersRequest.h"
#include "tests/service/server/RequestFrame.h"

namespace service {

TEST(FrameScanner, AFrameIsIncompleteUpToItsLastByteAndThenAMessage) {
    DaemonSetConnectionsIteratorParametersRequest request;
    request.iteratorId = 7;
    const std::vector<std::uint8_t> frame = requestFrame(11, request);
    std::vector<std::uint8_t> stream = frame;
    stream.insert(stream.end(), frame.begin(), frame.end());
    for (std::size_t size = 0; size < frame.size(); ++size) {
        EXPECT_EQ(scanFrame(std::span(stream).first(size)).kind, ScannedFrame::Kind::Incomplete) << size;
    }
    for (std::size_t size = frame.size(); size <= stream.size(); ++size) {
        const ScannedFrame scanned = scanFrame(std::span(stream).first(size));
        ASSERT_EQ(scanned.kind, ScannedFrame::Kind::Message) << size;
        EXPECT_EQ(scanned.consumed, frame.size());
        EXPECT_EQ(scanned.header.messageId, 11);
        EXPECT_EQ(scanned.header.messageType, 22);
        EXPECT_TRUE(std::ranges::equal(scanned.body, std::span(frame).subspan(20)));
    }
}

}  // namespace service
