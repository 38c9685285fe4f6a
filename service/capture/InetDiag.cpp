// SPDX-License-Identifier: GPL-3.0-or-later
#include "service/capture/InetDiag.h"

#include <linux/inet_diag.h>
#include <linux/netlink.h>
#include <linux/sock_diag.h>
#include <linux/tcp.h>
#include <netinet/in.h>

#include <algorithm>
#include <cstring>

namespace service::inetdiag {

const std::uint16_t messageType = SOCK_DIAG_BY_FAMILY;

namespace {

constexpr std::uint32_t bitOf(TcpState state) {
    return 1U << static_cast<unsigned>(state);
}

/** A handshake moves no payload, and sockets in TIME_WAIT have no counters: neither is asked for. */
constexpr std::uint32_t wantedStates = bitOf(TcpState::Listen) | bitOf(TcpState::Established) |
                                       bitOf(TcpState::FinWait1) | bitOf(TcpState::FinWait2) |
                                       bitOf(TcpState::CloseWait) | bitOf(TcpState::LastAck) |
                                       bitOf(TcpState::Closing);

/** The field of `tcp_info` at `offset`; nothing where an older kernel's structure ends before it. */
template <class Field = std::int64_t>
std::optional<Field> infoField(std::span<const std::byte> info, std::size_t offset) {
    Field value = 0;
    if (info.size() < offset + sizeof value) {
        return std::nullopt;
    }
    std::memcpy(&value, info.data() + offset, sizeof value);
    return value;
}

/**
 * Whether the peer's FIN has come. A socket that is gone no longer tells; nearly all have ended with one, so
 * it is taken for granted there.
 */
bool hasPeerFinished(TcpState state) {
    return state == TcpState::CloseWait || state == TcpState::LastAck || state == TcpState::Closing ||
           state == TcpState::Close;
}

/**
 * The payload of a connection.
 *
 * Received: tcpi_bytes_received (Linux 4.1), what came in order, so a repeated segment counts once. The
 * peer's FIN is in it as a byte and comes off; a connection that ended by a reset in the same interval as its
 * last data comes out a byte short.
 *
 * Sent: tcpi_bytes_sent - tcpi_bytes_retrans (Linux 4.19), what went out for the first time. Older kernels
 * have tcpi_bytes_acked (Linux 4.1), which lags by what is under way and counts SYN and FIN as a byte each.
 */
ByteCount payloadOf(std::span<const std::byte> info, TcpState state) {
    ByteCount bytes;
    bytes.received = infoField(info, offsetof(tcp_info, tcpi_bytes_received)).value_or(0);
    bytes.received -= bytes.received > 0 && hasPeerFinished(state) ? 1 : 0;
    const auto sent = infoField(info, offsetof(tcp_info, tcpi_bytes_sent));
    const auto repeated = infoField(info, offsetof(tcp_info, tcpi_bytes_retrans));
    bytes.sent = sent && repeated ? *sent - *repeated
                                  : infoField(info, offsetof(tcp_info, tcpi_bytes_acked)).value_or(0);
    return bytes;
}

/**
 * What moved beside the payload at the IP layer, estimated: segments (tcpi_segs_in and tcpi_segs_out, Linux 4.2; bare
 * acknowledgements, SYN and FIN are among them) times the headers of each, and what was sent again
 * (tcpi_bytes_retrans). A header is 20 bytes of IPv4 or 40 of IPv6, 20 of TCP and, where agreed, 12 of timestamps.
 *
 * Errors: the kernel does not tell of other options, so a handshake comes out 8 bytes short each way (12 without
 * timestamps) and a selective acknowledgement 12 to 36. The answer to a SYN is not among the segments of the socket
 * that it opens: who accepts lacks 60 to 80 bytes sent. Data that came twice misses from what was received. Segments
 * are those of the wire: a packet that the network card cuts up, or has joined, counts as its pieces.
 */
ByteCount overheadOf(std::span<const std::byte> info, std::uint8_t addressFamily) {
    const auto options = infoField<std::uint8_t>(info, offsetof(tcp_info, tcpi_options)).value_or(0);
    const std::int64_t header =
        (addressFamily == IpAddress::IPv4 ? 20 : 40) + 20 + ((options & TCPI_OPT_TIMESTAMPS) != 0 ? 12 : 0);
    const auto bytesOf = [&](std::size_t segments) {
        return header * infoField<std::uint32_t>(info, segments).value_or(0);
    };
    return {.received = bytesOf(offsetof(tcp_info, tcpi_segs_in)),
            .sent = bytesOf(offsetof(tcp_info, tcpi_segs_out)) +
                    infoField(info, offsetof(tcp_info, tcpi_bytes_retrans)).value_or(0)};
}

/** The address in the diagnostics' form, which keeps address words and port in network order. */
IpAddress addressOf(std::int32_t socketDomain, const __be32 (&words)[4], __be16 port) {
    IpAddress result;
    result.port = ntohs(port);
    in6_addr whole;
    std::memcpy(&whole, words, sizeof whole);
    const bool mapped = IN6_IS_ADDR_V4MAPPED(&whole);
    result.family = socketDomain == AF_INET || mapped ? IpAddress::IPv4 : IpAddress::IPv6;
    const std::size_t length = IpAddress::addressLength(result.family);
    const std::size_t skipped = socketDomain == AF_INET6 && mapped ? 12 : 0;
    std::memcpy(result.address.data(), whole.s6_addr + skipped, length);
    return result;
}

/** Reads the counters of `report`, if they are there. False when an attribute ends outside of its message. */
bool readAttributes(std::span<const std::byte> attributes, SocketReport& report) {
    nlattr header;
    while (attributes.size() >= sizeof header) {
        std::memcpy(&header, attributes.data(), sizeof header);
        if (header.nla_len < sizeof header || header.nla_len > attributes.size()) {
            return false;
        }
        if ((header.nla_type & NLA_TYPE_MASK) == INET_DIAG_INFO) {
            const auto info = attributes.subspan(sizeof header, header.nla_len - sizeof header);
            report.payload = payloadOf(info, report.state);
            report.overhead = overheadOf(info, report.remote.family);
        }
        const std::size_t padded = NLA_ALIGN(static_cast<std::size_t>(header.nla_len));
        attributes = attributes.subspan(std::min(padded, attributes.size()));
    }
    return true;
}

}  // namespace

std::vector<std::byte> tcpDumpRequest(std::int32_t socketDomain) {
    inet_diag_req_v2 request{};
    request.sdiag_family = static_cast<std::uint8_t>(socketDomain);
    request.sdiag_protocol = IPPROTO_TCP;
    request.idiag_ext = 1U << (INET_DIAG_INFO - 1);
    request.idiag_states = wantedStates;
    const auto bytes = std::as_bytes(std::span(&request, 1));
    return {bytes.begin(), bytes.end()};
}

std::optional<SocketReport> decode(std::span<const std::byte> payload) {
    inet_diag_msg message;
    if (payload.size() < sizeof message) {
        return std::nullopt;
    }
    std::memcpy(&message, payload.data(), sizeof message);
    if (message.idiag_family != AF_INET && message.idiag_family != AF_INET6) {
        return std::nullopt;
    }
    SocketReport report;
    report.cookie = message.id.idiag_cookie[0] | std::uint64_t{message.id.idiag_cookie[1]} << 32;
    report.state = static_cast<TcpState>(message.idiag_state);
    report.socketDomain = message.idiag_family;
    report.local = addressOf(report.socketDomain, message.id.idiag_src, message.id.idiag_sport);
    report.remote = addressOf(report.socketDomain, message.id.idiag_dst, message.id.idiag_dport);
    report.inode = message.idiag_inode;
    if (!readAttributes(payload.subspan(sizeof message), report)) {
        return std::nullopt;
    }
    return report;
}

}  // namespace service::inetdiag
