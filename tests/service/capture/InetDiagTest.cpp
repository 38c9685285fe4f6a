// SPDX-License-Identifier: GPL-3.0-or-later
#include "service/capture/InetDiag.h"

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <linux/inet_diag.h>
#include <linux/netlink.h>
#include <linux/tcp.h>

#include <cstring>

namespace service::inetdiag {
namespace {

constexpr std::size_t wholeInfo = sizeof(tcp_info);
constexpr std::size_t infoOfLinux41 = offsetof(tcp_info, tcpi_segs_out);

/** An answer as the kernel writes it: the message, an attribute to pass over, and `infoLength` bytes of
 * tcp_info. */
std::vector<std::byte> answer(inet_diag_msg message, std::size_t infoLength) {
    message.id.idiag_cookie[0] = 0x55667788;
    message.id.idiag_cookie[1] = 0x11223344;
    message.id.idiag_sport = htons(443);
    message.id.idiag_dport = htons(50000);
    message.idiag_inode = 4711;
    tcp_info info{};
    info.tcpi_bytes_received = 1001;
    info.tcpi_bytes_sent = 900;
    info.tcpi_bytes_retrans = 200;
    info.tcpi_bytes_acked = 650;
    info.tcpi_segs_in = 10;
    info.tcpi_segs_out = 7;
    info.tcpi_options = TCPI_OPT_TIMESTAMPS;
    const nlattr other{.nla_len = 5, .nla_type = INET_DIAG_SHUTDOWN};
    const nlattr header{.nla_len = static_cast<std::uint16_t>(NLA_HDRLEN + infoLength),
                        .nla_type = INET_DIAG_INFO};

    std::vector<std::byte> bytes(sizeof message + 8 + NLA_HDRLEN + infoLength);
    std::byte* end = bytes.data();
    std::memcpy(end, &message, sizeof message);
    std::memcpy(end += sizeof message, &other, sizeof other);
    std::memcpy(end += 8, &header, sizeof header);
    std::memcpy(end + NLA_HDRLEN, &info, infoLength);
    return bytes;
}

inet_diag_msg established() {
    inet_diag_msg message{};
    message.idiag_family = AF_INET;
    message.idiag_state = static_cast<std::uint8_t>(TcpState::Established);
    return message;
}

TEST(InetDiag, ReadsWhatTheKernelWrote) {
    inet_diag_msg message = established();
    message.id.idiag_src[0] = htonl(0x7F000001);
    const auto report = decode(answer(message, wholeInfo));
    ASSERT_TRUE(report);
    EXPECT_EQ(report->cookie, 0x1122334455667788U);
    EXPECT_EQ(report->state, TcpState::Established);
    EXPECT_EQ(report->socketDomain, AF_INET);
    EXPECT_EQ(report->local, (IpAddress{IpAddress::IPv4, 443, {127, 0, 0, 1}}));
    EXPECT_EQ(report->remote.port, 50000);
    EXPECT_EQ(report->inode, 4711U);
    EXPECT_EQ(report->payload, (ByteCount{.received = 1001, .sent = 700}));
    EXPECT_EQ(report->overhead, (ByteCount{.received = 520, .sent = 364 + 200}));
}

TEST(InetDiag, ShowsMappedAddressesAsIpv4AndOthersAsIpv6) {
    inet_diag_msg message = established();
    message.idiag_family = AF_INET6;
    ASSERT_EQ(inet_pton(AF_INET6, "::ffff:10.1.2.3", message.id.idiag_src), 1);
    ASSERT_EQ(inet_pton(AF_INET6, "2001:db8::7", message.id.idiag_dst), 1);
    const auto report = decode(answer(message, wholeInfo));
    ASSERT_TRUE(report);
    EXPECT_EQ(report->socketDomain, AF_INET6);
    EXPECT_EQ(report->local, (IpAddress{IpAddress::IPv4, 443, {10, 1, 2, 3}}));
    EXPECT_EQ(report->remote,
              (IpAddress{IpAddress::IPv6, 50000, {0x20, 1, 0x0d, 0xb8, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 7}}));
    EXPECT_EQ(report->overhead.received, 720) << "headers of IPv6";
}

TEST(InetDiag, MakesDoWithTheShorterAnswersOfOlderKernels) {
    EXPECT_EQ(decode(answer(established(), infoOfLinux41))->payload,
              (ByteCount{.received = 1001, .sent = 650}));
    EXPECT_EQ(decode(answer(established(), offsetof(tcp_info, tcpi_bytes_acked)))->payload, ByteCount{});
    EXPECT_EQ(decode(answer(established(), 0))->payload, ByteCount{});
}

TEST(InetDiag, SurvivesATruncationAtEveryByte) {
    const auto whole = answer(established(), wholeInfo);
    for (std::size_t length = 0; length < whole.size(); ++length) {
        const std::vector<std::byte> cut(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(length));
        const auto report = decode(cut);
        EXPECT_FALSE(report && report->payload) << length;
    }
}

TEST(InetDiag, RefusesAttributesWhoseLengthIsALie) {
    for (const std::uint16_t lie : {0, 3, 0xFFFF}) {
        auto bytes = answer(established(), wholeInfo);
        std::memcpy(bytes.data() + sizeof(inet_diag_msg), &lie, sizeof lie);
        EXPECT_FALSE(decode(bytes)) << lie;
    }
}

}  // namespace
}  // namespace service::inetdiag
