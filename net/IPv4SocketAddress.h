// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "net/IPv4Address.h"
#include "net/SocketAddress.h"

namespace Net {

/** An IPv4 address with a port: a 16-byte image, bytes 2-3 the port (big-endian), 4-7 the address, 8-15 zero.
 */
class IPv4SocketAddress : public SocketAddress {
  public:
    /** 0.0.0.0 with port 0. */
    IPv4SocketAddress();

    /** `port` in host order. */
    IPv4SocketAddress(const IPv4Address& address, unsigned short port);

    IPv4SocketAddress(const IPv4SocketAddress& other) = default;
    ~IPv4SocketAddress() override = default;

    /** Copies nothing, on purpose: only an assignment through `SocketAddress` copies. */
    IPv4SocketAddress& operator=(const IPv4SocketAddress& other);

    /** In host order. */
    unsigned short GetPort() const;
    IPv4Address GetIPAddress() const;
};

}  // namespace Net
