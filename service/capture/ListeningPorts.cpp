// SPDX-License-Identifier: GPL-3.0-or-later
#include "service/capture/ListeningPorts.h"

#include <sys/socket.h>

namespace service {

void ListeningPorts::beginDump() {
    m_Previous = std::move(m_Latest);
    m_Latest.clear();
}

void ListeningPorts::add(const SocketReport& listener) {
    m_Latest.emplace(listener.socketDomain, listener.local.port);
    const bool wildcard = listener.local.address == IpAddress().address;
    if (listener.socketDomain == AF_INET6 && wildcard) {  // takes IPv4 connections too
        m_Latest.emplace(AF_INET, listener.local.port);
    }
}

Direction ListeningPorts::directionOf(const SocketReport& connection) const {
    const std::pair key(connection.socketDomain, connection.local.port);
    return m_Latest.contains(key) || m_Previous.contains(key) ? Direction::Input : Direction::Output;
}

}  // namespace service
