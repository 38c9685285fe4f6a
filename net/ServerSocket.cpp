// SPDX-License-Identifier: GPL-3.0-or-later
#include "net/ServerSocket.h"

#include <sys/socket.h>
#include <unistd.h>

#include "net/HostAddress.h"

namespace Net {

namespace {

constexpr int backlog = 1;

int boundDescriptor(const SocketAddress& address) {
    const int descriptor = ::socket(address.GetFamily(), Stream, 0);
    if (descriptor == -1) {
        return -1;
    }
    HostAddress host(address);
    if (::bind(descriptor, host.Get(), *host.Length()) != 0) {
        ::close(descriptor);
        return -1;
    }
    return descriptor;
}

}  // namespace

ServerSocket::ServerSocket(const SocketAddress& address, SocketType /*type*/)
    : m_Descriptor(boundDescriptor(address)), m_Address(address) {}

ServerSocket::~ServerSocket() {
    ServerSocket::breakListen();
    ::close(m_Descriptor);
}

void ServerSocket::onSocketAccepted(Socket* socket) {
    delete socket;
}

void ServerSocket::listen() {
    m_IsListening = true;
    if (::listen(m_Descriptor, backlog) == 0) {
        serveOne();
    }
    m_IsListening = false;
}

void ServerSocket::serveOne() {
    HostAddress peer;
    const int descriptor = ::accept(m_Descriptor, peer.Get(), peer.Length());
    if (descriptor < 0) {
        return;
    }
    if (m_IsBreakRequested) {
        ::close(descriptor);
    } else {
        onSocketAccepted(new Socket(descriptor, peer.ToSocketAddress()));
    }
    m_IsBreakRequested = false;
}

void ServerSocket::breakListen() {
    if (m_Descriptor < 0 || !m_IsListening) {
        return;
    }
    m_IsBreakRequested = true;
    while (m_IsListening) {
        const Socket waking(m_Address,
                            Stream);  // again each time: the first may come before the socket listens
        if (m_IsListening) {
            ::sleep(1);
        }
    }
}

}  // namespace Net
