// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <sys/socket.h>

#include "net/SocketAddress.h"

namespace Net {

/** A socket address in the host's own layout, for the length of a system call. */
class HostAddress {
  public:
    /** Room for an address that a system call fills in. */
    HostAddress();

    /** The host's form of a BSD image. */
    explicit HostAddress(const SocketAddress& address);

    /** The BSD image of what is held. */
    SocketAddress ToSocketAddress() const;

    sockaddr* Get() { return reinterpret_cast<sockaddr*>(&m_Storage); }
    socklen_t* Length() { return &m_Length; }

  private:
    sockaddr_storage m_Storage{};
    socklen_t m_Length;
};

}  // namespace Net
