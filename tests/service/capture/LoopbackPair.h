// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <string>
#include <utility>

namespace service {

/** Both ends of a TCP connection over loopback, and the AF_INET6 socket that listened for it. */
class LoopbackPair {
  public:
    /** @param clientDomain AF_INET or AF_INET6 */
    explicit LoopbackPair(int clientDomain)
        : m_Client(::socket(clientDomain, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
        ::listen(m_Listener, 4);  // on a free port of every address
        sockaddr_in6 address = addressOf(m_Listener);
        // "Any address" as a destination is this machine; IPv4 keeps port and address at the same places.
        address.sin6_family = static_cast<sa_family_t>(clientDomain);
        if (::connect(m_Client, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0) {
            m_Server = ::accept4(m_Listener, nullptr, nullptr, SOCK_CLOEXEC);
        }
    }
    ~LoopbackPair() {
        closeClient();
        closeServer();
        ::close(m_Listener);
    }
    LoopbackPair(const LoopbackPair&) = delete;
    LoopbackPair& operator=(const LoopbackPair&) = delete;

    int client() const { return m_Client; }
    int server() const { return m_Server; }
    std::uint16_t clientPort() const { return ntohs(addressOf(m_Client).sin6_port); }
    std::uint16_t serverPort() const { return ntohs(addressOf(m_Listener).sin6_port); }

    void closeClient() { ::close(std::exchange(m_Client, -1)); }
    void closeServer() { ::close(std::exchange(m_Server, -1)); }

    /** Ends the connection in order: the server has read the client's end before it closes. */
    void closeBoth() {
        closeClient();
        char none;
        ::recv(m_Server, &none, 1, 0);
        closeServer();
    }

    /** Sends so many bytes and returns once the other end has read them all. */
    static void move(int from, int to, std::size_t bytes) {
        std::string block(bytes, 'x');
        ::send(from, block.data(), block.size(), MSG_NOSIGNAL);
        ::recv(to, block.data(), block.size(), MSG_WAITALL);
    }

  private:
    static sockaddr_in6 addressOf(int socket) {
        sockaddr_in6 address{};
        socklen_t length = sizeof address;
        ::getsockname(socket, reinterpret_cast<sockaddr*>(&address), &length);
        return address;
    }

    const int m_Listener = ::socket(AF_INET6, SOCK_STREAM | SOCK_CLOEXEC, 0);
    int m_Client;
    int m_Server = -1;
};

}  // namespace service
