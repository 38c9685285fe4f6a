// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "net/SocketAddress.h"
#include "net/SocketType.h"

namespace Net {

/**
 * A connected stream socket. Nothing is thrown or reported: the caller asks `isValid`.
 *
 * One thread may read while another writes. A peer that is gone makes `write` fail, it never raises SIGPIPE;
 * an interrupted read, write or wait never looks like a failure.
 */
class Socket {
  public:
    /** Connects to `address`, blocking; invalid when that fails. */
    Socket(const SocketAddress& address, SocketType type);

    /** Takes over a connected descriptor; `address` is its peer's. */
    Socket(int descriptor, const SocketAddress& address);

    ~Socket();

    Socket(const Socket&) = delete;
    Socket& operator=(const Socket&) = delete;

    bool isValid() const { return m_Descriptor != -1; }

    /** Bytes read, 0 at the end of the stream, -1 on error. Blocks until one of these. */
    long read(void* data, unsigned long length);

    /** Bytes written, which may be fewer than `length`, or -1 on error. */
    long write(const void* data, unsigned long length);

    /**
     * Waits up to 5 ms for something to read. True also when the wait itself fails: the reader then finds the
     * failure through `read`. False at once for an invalid socket.
     */
    bool isDataAvailable() const;

    const SocketAddress& getAddress() const { return m_Address; }

  private:
    int m_Descriptor;
    SocketAddress m_Address;
};

}  // namespace Net
