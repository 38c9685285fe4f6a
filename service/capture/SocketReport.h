// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <optional>

#include "libs/utils/src/IpAddress.h"
#include "service/traffic/Counters.h"

namespace service {

/** States of a TCP socket, numbered as the kernel does in its socket diagnostics. */
enum class TcpState : std::uint8_t {
    Established = 1,
    SynSent = 2,
    SynReceived = 3,
    FinWait1 = 4,
    FinWait2 = 5,
    TimeWait = 6,
    Close = 7,
    CloseWait = 8,
    LastAck = 9,
    Listen = 10,
    Closing = 11,
};

/** What the kernel says of one TCP socket. */
struct SocketReport {
    std::uint64_t cookie = 0;  ///< the socket's own number, never used again while the system is up
    TcpState state = TcpState::Close;
    std::int32_t socketDomain =
        0;            ///< AF_INET or AF_INET6, the socket's own also where its addresses are mapped
    IpAddress local;  ///< an IPv4-mapped IPv6 address stands here as IPv4
    IpAddress remote;
    std::uint32_t inode = 0;  ///< 0: in no process's hands, either not accepted yet or given up

    /** Payload since the socket began; nothing for what is left of a socket in TIME_WAIT. */
    std::optional<ByteCount> payload;

    /** What moved beside it at the IP layer, estimated: headers, and data that was sent again. */
    ByteCount overhead;
};

}  // namespace service
