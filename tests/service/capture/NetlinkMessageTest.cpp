// SPDX-License-Identifier: GPL-3.0-or-later
#include "service/capture/NetlinkMessage.h"

#include <gtest/gtest.h>
#include <linux/netlink.h>

#include <algorithm>
#include <cstring>
#include <vector>

namespace service {
namespace {

std::vector<std::byte> message(std::uint16_t type, std::uint32_t claimedLength, std::size_t realLength) {
    nlmsghdr header{};
    header.nlmsg_len = claimedLength;
    header.nlmsg_type = type;
    std::vector<std::byte> bytes(realLength);
    std::memcpy(bytes.data(), &header, std::min(realLength, sizeof header));
    return bytes;
}

TEST(NetlinkMessage, FollowOneAnotherAtFourByteSteps) {
    auto bytes = message(20, 18, 20);
    const auto second = message(NLMSG_DONE, 17, 17);  // the last one may lack its padding
    bytes.insert(bytes.end(), second.begin(), second.end());

    std::span<const std::byte> rest(bytes);
    const auto first = takeNetlinkMessage(rest);
    ASSERT_TRUE(first);
    EXPECT_EQ(first->type, 20);
    EXPECT_EQ(first->payload.size(), 2U);
    const auto last = takeNetlinkMessage(rest);
    ASSERT_TRUE(last);
    EXPECT_EQ(last->type, NLMSG_DONE);
    EXPECT_TRUE(rest.empty());
}

TEST(NetlinkMessage, ThatIsNotWholeIsLeftThere) {
    for (const auto& bytes : {message(20, 16, 15), message(20, 0, 64), message(20, 15, 64),
                              message(20, 65, 64), message(20, 0xFFFFFFFF, 64)}) {
        std::span<const std::byte> rest(bytes);
        EXPECT_FALSE(takeNetlinkMessage(rest));
        EXPECT_EQ(rest.size(), bytes.size());
    }
}

}  // namespace
}  // namespace service
