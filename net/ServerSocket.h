// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <atomic>

#include "net/Socket.h"
#include "net/SocketAddress.h"
#include "net/SocketType.h"

namespace Net {

/** A listening stream socket that accepts one connection a call and hands it to a virtual handler. */
class ServerSocket {
  public:
    /** Binds to `address`; invalid when that fails. Always a stream socket: `type` is ignored, on purpose. */
    ServerSocket(const SocketAddress& address, SocketType type);

    /**
     * Ends a `listen` on another thread first. A subclass that overrides `onSocketAccepted` calls `breakListen` in
     * its own destructor: here its handler is gone already.
     */
    virtual ~ServerSocket();

    /** A connection was accepted; takes `socket` over. This version closes it. */
    virtual void onSocketAccepted(Socket* socket);

    ServerSocket(const ServerSocket&) = delete;
    ServerSocket& operator=(const ServerSocket&) = delete;

    bool isValid() const { return m_Descriptor >= 0; }
    const SocketAddress& getAddress() const { return m_Address; }

    /** Waits for one connection and serves it. Returns silently when it fails or `breakListen` was called. */
    void listen();

    /**
     * Wakes a `listen` that waits on another thread and returns when it has ended (looked at once a second);
     * at once when none is in progress.
     */
    void breakListen();

  private:
    void serveOne();

    int m_Descriptor;
    SocketAddress m_Address;
    std::atomic<bool> m_IsListening{false};
    std::atomic<bool> m_IsBreakRequested{false};
};

}  // namespace Net
