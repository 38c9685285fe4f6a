// SPDX-License-Identifier: GPL-3.0-or-later
#include "libs/utils/src/StringUtils.h"

#include <gtest/gtest.h>

namespace {

TEST(StringUtils, IntegersFollowCsNotation) {
    EXPECT_EQ(stringToInt("0x10"), 16);
    EXPECT_EQ(stringToInt("010"), 8);
    EXPECT_EQ(stringToInt("-12 apples"), -12);
    EXPECT_EQ(stringToInt("abc"), 0);
    EXPECT_EQ(intToString(-7), "-7");
}

TEST(StringUtils, AddressesAreDecimalBytesInBothFamilies) {
    EXPECT_EQ(ipToString(stringToIp("192.168.0.1", 0)), "192.168.0.1");
    const std::string ipv6 = "32.1.13.184.0.0.0.0.0.0.0.0.0.0.0.255";
    EXPECT_EQ(ipToString(stringToIp(ipv6, 1)), ipv6);
    EXPECT_EQ(stringToIp(ipv6, 1).address[1], 1);
    EXPECT_EQ(ipToString(stringToIp("1.2.3.4", 2)), "");
}

TEST(StringUtils, AddressesWithTooFewBytesStayZeroAndExtraOnesAreIgnored) {
    EXPECT_EQ(ipToString(stringToIp("192.168.1", 0)), "0.0.0.0");
    EXPECT_EQ(ipToString(stringToIp("10.0.0.1.5", 0)), "10.0.0.1");
    EXPECT_EQ(ipToString(stringToIp("10..0.0.1.", 0)), "10.0.0.1");
}

TEST(IpAddress, ComparesOnlyTheBytesOfItsFamily) {
    IpAddress first = stringToIp("1.2.3.4", 0);
    IpAddress second = first;
    second.address[9] = 1;
    EXPECT_EQ(first, second);
    first.family = second.family = 1;
    EXPECT_NE(first, second);
    first.family = second.family = 7;
    EXPECT_EQ(first, second);
    second.port = 1;
    EXPECT_NE(first, second);
    EXPECT_TRUE(IpAddress().isEmpty());
    EXPECT_FALSE(stringToIp("0.0.0.1", 0).isEmpty());
    EXPECT_FALSE(stringToIp("", 1).isEmpty());
}

}  // namespace
