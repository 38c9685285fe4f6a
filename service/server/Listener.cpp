// SPDX-License-Identifier: GPL-3.0-or-later
#include "service/server/Listener.h"

#include <netinet/tcp.h>
#include <sys/socket.h>

#include <cerrno>
#include <cstring>
#include <utility>

#include "service/server/SocketOptions.h"

namespace service {

namespace {

sockaddr_in socketAddress(const ListenAddress& address) {
    sockaddr_in result{};
    result.sin_family = AF_INET;
    result.sin_addr = address.address;
    result.sin_port = htons(address.port);
    return result;
}

/** Binds and listens; false with the cause in errno. */
bool listenAt(int descriptor, const ListenAddress& address) {
    const sockaddr_in where = socketAddress(address);
    return setSocketOption(descriptor, SOL_SOCKET, SO_REUSEADDR, 1) &&
           ::bind(descriptor, reinterpret_cast<const sockaddr*>(&where), sizeof where) == 0 &&
           ::listen(descriptor, SOMAXCONN) == 0;
}

ListenAddress boundAddress(int descriptor, const ListenAddress& asked) {
    sockaddr_in where = socketAddress(asked);
    socklen_t length = sizeof where;
    ::getsockname(descriptor, reinterpret_cast<sockaddr*>(&where), &length);
    return {.address = where.sin_addr, .port = ntohs(where.sin_port)};
}

}  // namespace

Listener::Listener(FileDescriptor descriptor, const ListenAddress& address)
    : m_Descriptor(std::move(descriptor)), m_Address(address) {}

std::optional<Listener> Listener::open(const ListenAddress& address, std::string& error) {
    FileDescriptor descriptor(::socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
    if (!descriptor.isValid() || !listenAt(descriptor.get(), address)) {
        error = "cannot listen on " + address.text() + ": " +
                (errno == EADDRINUSE ? "somebody does already, such as another nevtora-daemon"
                                     : std::strerror(errno));
        return std::nullopt;
    }
    const ListenAddress bound = boundAddress(descriptor.get(), address);
    return Listener(std::move(descriptor), bound);
}

Listener::Arrival Listener::accept(FileDescriptor& socket) {
    FileDescriptor accepted(::accept4(m_Descriptor.get(), nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC));
    if (!accepted.isValid()) {
        const bool exhausted = errno == EMFILE || errno == ENFILE || errno == ENOBUFS || errno == ENOMEM;
        return exhausted ? Arrival::NoDescriptor : Arrival::None;
    }
    // A frame is two writes: without this the second waits for the peer's delayed acknowledgement.
    setSocketOption(accepted.get(), IPPROTO_TCP, TCP_NODELAY, 1);
    setResetOnClose(accepted.get(), true);
    socket = std::move(accepted);
    return Arrival::Client;
}

}  // namespace service
