// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include "net/IPv4SocketAddress.h"

/** A listening socket on the loopback address, made with plain system calls; port 0 takes a free one. */
class Listener {
  public:
    explicit Listener(unsigned short port = 0) {
        const int on = 1;
        setsockopt(m_Descriptor, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_port = htons(port);
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        m_IsBound = bind(m_Descriptor, reinterpret_cast<sockaddr*>(&address), sizeof address) == 0 &&
                    listen(m_Descriptor, 16) == 0;
        socklen_t length = sizeof address;
        getsockname(m_Descriptor, reinterpret_cast<sockaddr*>(&address), &length);
        m_Port = ntohs(address.sin_port);
    }
    ~Listener() { close(m_Descriptor); }

    Listener(const Listener&) = delete;
    Listener& operator=(const Listener&) = delete;

    bool isBound() const { return m_IsBound; }
    unsigned short port() const { return m_Port; }
    Net::IPv4SocketAddress address() const { return {Net::IPv4Address(127, 0, 0, 1), m_Port}; }

    /** Makes a waiting `accept` fail. */
    void wakeAccept() const { shutdown(m_Descriptor, SHUT_RDWR); }

    /** The next connection's descriptor, the caller's to close. */
    int accept() const { return ::accept(m_Descriptor, nullptr, nullptr); }

  private:
    int m_Descriptor = socket(AF_INET, SOCK_STREAM, 0);
    unsigned short m_Port = 0;
    bool m_IsBound = false;
};
