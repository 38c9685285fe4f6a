// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <set>
#include <utility>

#include "service/capture/SocketReport.h"
#include "service/traffic/TrafficSample.h"

namespace service {

/**
 * Tells who opened a connection by whether its local port is one that a socket listens on.
 *
 * A port counts as long as it was listening in the latest dump or the one before: a server that takes a
 * single connection has often closed its listening socket by the time the connection is seen.
 */
class ListeningPorts {
  public:
    /** A new dump begins: forgets the ports of the dump before the last. */
    void beginDump();

    void add(const SocketReport& listener);

    Direction directionOf(const SocketReport& connection) const;

  private:
    using Ports = std::set<std::pair<std::int32_t, std::uint16_t>>;  ///< socket domain and port

    Ports m_Latest;
    Ports m_Previous;
};

}  // namespace service
