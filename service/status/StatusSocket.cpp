// SPDX-License-Identifier: GPL-3.0-or-later
#include "service/status/StatusSocket.h"

#include <sys/epoll.h>
#include <sys/socket.h>

#include <cerrno>
#include <cstring>
#include <utility>

namespace service {

std::unique_ptr<StatusSocket> StatusSocket::open(EventLoop& loop, const std::string& databasePath,
                                                 std::function<std::string()> status, std::string& error) {
    constexpr int waiting = 8;
    StatusAddress address(databasePath);
    FileDescriptor listener(::socket(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
    if (address.isValid()) {
        address.unlink();
    }
    if (!address.isValid() || !listener.isValid() ||
        ::bind(listener.get(), reinterpret_cast<const sockaddr*>(&address.address()), sizeof(sockaddr_un)) !=
            0 ||
        ::listen(listener.get(), waiting) != 0) {
        error = std::strerror(errno);
        return nullptr;
    }
    return std::unique_ptr<StatusSocket>(
        new StatusSocket(loop, std::move(address), std::move(listener), std::move(status)));
}

StatusSocket::StatusSocket(EventLoop& loop, StatusAddress address, FileDescriptor listener,
                           std::function<std::string()> status)
    : m_Loop(loop),
      m_Address(std::move(address)),
      m_Listener(std::move(listener)),
      m_Status(std::move(status)),
      m_Watch(loop.watch(m_Listener.get(), EPOLLIN, [this](std::uint32_t) { answer(); })) {}

StatusSocket::~StatusSocket() {
    m_Loop.unwatch(m_Watch);
    m_Address.unlink();
}

void StatusSocket::answer() {
    const FileDescriptor client(::accept4(m_Listener.get(), nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC));
    if (client.isValid()) {
        const std::string text = m_Status();
        // It fits into the socket's buffer, so nobody has to wait for a client that does not read.
        [[maybe_unused]] const ssize_t sent = ::send(client.get(), text.data(), text.size(), MSG_NOSIGNAL);
    }
}

}  // namespace service
