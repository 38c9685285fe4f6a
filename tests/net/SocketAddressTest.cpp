// SPDX-License-Identifier: GPL-3.0-or-later
#include "net/SocketAddress.h"

#include <gtest/gtest.h>

#include "net/HostAddress.h"
#include "net/IPv4SocketAddress.h"
#include "net/LocalSocketAddress.h"

namespace {

using Net::IPv4Address;
using Net::IPv4SocketAddress;
using Net::LocalSocketAddress;
using Net::SocketAddress;

const unsigned char* imageOf(const SocketAddress& address) {
    return reinterpret_cast<const unsigned char*>(address.GetSockAddr());
}

TEST(SocketAddress, LaysAnIPv4AddressOutAsBsdDoes) {
    const IPv4SocketAddress address(IPv4Address(127, 0, 0, 1), 10023);
    const unsigned char expected[16] = {16, 2, 0x27, 0x27, 127, 0, 0, 1};
    EXPECT_TRUE(std::equal(expected, expected + 16, imageOf(address)));
    EXPECT_EQ(address.GetPort(), 10023);
    EXPECT_EQ(address.GetIPAddress(), IPv4Address(127, 0, 0, 1));
    EXPECT_EQ(address.GetDataLength(), 14);
}

TEST(SocketAddress, AssignmentWritesOverALongerImageAndReplacesAShorterOne) {
    SocketAddress longer;
    EXPECT_EQ(imageOf(longer)[0], 106);
    const sockaddr* storage = longer.GetSockAddr();
    const IPv4SocketAddress ip(IPv4Address(1, 2, 3, 4), 5);
    longer = ip;
    EXPECT_EQ(longer.GetSockAddr(), storage);
    EXPECT_EQ(imageOf(longer)[0], 16);
    EXPECT_EQ(longer.GetFamily(), 2);

    IPv4SocketAddress target;
    static_cast<SocketAddress&>(target) = SocketAddress();
    EXPECT_EQ(imageOf(target)[0], 106);
    EXPECT_EQ(target.GetFamily(), 1);
}

TEST(SocketAddress, AssigningIPv4AddressesToEachOtherCopiesNothing) {
    const IPv4SocketAddress source(IPv4Address(1, 2, 3, 4), 5);
    IPv4SocketAddress target;
    target = source;
    EXPECT_EQ(target.GetPort(), 0);
    static_cast<SocketAddress&>(target) = source;
    EXPECT_EQ(target.GetPort(), 5);
}

TEST(SocketAddress, ALocalPathIsKeptWholeBehindALengthOfSix) {
    const std::string path(104, 'p');
    const LocalSocketAddress address(path);
    EXPECT_EQ(address.GetPath(), path);
    EXPECT_EQ(address.GetDataLength(), 4);
    EXPECT_EQ(LocalSocketAddress(address).GetPath(), "pppp") << "copies see what the length byte says";
    EXPECT_EQ(LocalSocketAddress().GetPath(), "");
}

TEST(SocketAddress, SurvivesTheHostsLayoutAndBack) {
    const IPv4SocketAddress address(IPv4Address(10, 0, 0, 1), 80);
    const SocketAddress back = Net::HostAddress(address).ToSocketAddress();
    EXPECT_TRUE(std::equal(imageOf(address), imageOf(address) + 16, imageOf(back)));
    EXPECT_EQ(SocketAddress(address.GetSockAddr()).GetDataLength(), 14);
}

}  // namespace
