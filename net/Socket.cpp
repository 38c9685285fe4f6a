// SPDX-License-Identifier: GPL-3.0-or-later
#include "net/Socket.h"

#include <fcntl.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>

#include "net/HostAddress.h"

namespace Net {

namespace {

constexpr int dataWaitMilliseconds = 5;

#ifdef MSG_NOSIGNAL
constexpr int sendFlags = MSG_NOSIGNAL;
#else
constexpr int sendFlags = 0;
#endif

/** Repeats a system call for as long as a signal interrupts it. */
template <class Call>
auto uninterrupted(Call call) {
    auto result = call();
    while (result == -1 && errno == EINTR) {
        result = call();
    }
    return result;
}

/**
 * A frame leaves in two writes, header and body. With Nagle's algorithm on, the second would wait for the peer's
 * delayed acknowledgement of the first: 44 ms a request. Ignored by sockets that are not TCP. Programs that this
 * one starts must not hold its connection open.
 */
void setOptions(int descriptor) {
    const int on = 1;
    fcntl(descriptor, F_SETFD, FD_CLOEXEC);
    setsockopt(descriptor, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
#ifdef SO_NOSIGPIPE
    setsockopt(descriptor, SOL_SOCKET, SO_NOSIGPIPE, &on, sizeof on);
#endif
}

int connectedDescriptor(const SocketAddress& address, SocketType type) {
    const int descriptor = ::socket(address.GetFamily(), type, 0);
    if (descriptor == -1) {
        return -1;
    }
    setOptions(descriptor);
    HostAddress host(address);
    if (::connect(descriptor, host.Get(), *host.Length()) != 0) {
        ::close(descriptor);
        return -1;
    }
    return descriptor;
}

}  // namespace

Socket::Socket(const SocketAddress& address, SocketType type)
    : m_Descriptor(connectedDescriptor(address, type)), m_Address(address) {}

Socket::Socket(int descriptor, const SocketAddress& address) : m_Descriptor(descriptor), m_Address(address) {
    setOptions(descriptor);
}

Socket::~Socket() {
    ::close(m_Descriptor);
}

long Socket::read(void* data, unsigned long length) {
    return uninterrupted([&] { return ::read(m_Descriptor, data, length); });
}

long Socket::write(const void* data, unsigned long length) {
    return uninterrupted([&] { return ::send(m_Descriptor, data, length, sendFlags); });
}

bool Socket::isDataAvailable() const {
    if (m_Descriptor == -1) {
        return false;
    }
    pollfd wanted{m_Descriptor, POLLIN, 0};
    const int ready = ::poll(&wanted, 1, dataWaitMilliseconds);
    return ready != 0 && !(ready == -1 && errno == EINTR);
}

}  // namespace Net
