// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <memory>

#include "libs/utils/src/IpAddress.h"
#include "service/traffic/ApplicationIdentity.h"
#include "service/traffic/Counters.h"
#include "service/traffic/Moment.h"

namespace service {

/** Who opened a connection. On the wire: never renumber. */
enum class Direction : std::int32_t { Input = 0, Output = 1, Undefined = 2 };

/**
 * What one connection did since the previous poll of its source.
 *
 * A sample is complete in itself: whoever meets its key for the first time can open a connection from it,
 * also in the middle of the connection's life.
 */
struct TrafficSample {
    std::uint64_t connectionKey = 0;  ///< unique within the source for the daemon's life
    std::shared_ptr<const ApplicationIdentity> application;  ///< never null; one for all samples of a key
    std::int32_t socketDomain = 0;                           ///< AF_INET or AF_INET6
    std::int32_t socketType = 0;                             ///< SOCK_STREAM, SOCK_DGRAM, ...
    std::int32_t socketProtocol = 0;                         ///< 6 TCP, 17 UDP, ...
    Direction direction = Direction::Undefined;
    IpAddress local;
    IpAddress remote;
    Moment opened;        ///< when the source saw it first
    ByteCount moved;      ///< at the IP layer, headers included, since the previous poll; never negative
    ByteCount payload;    ///< of those what programs gave and got; never negative
    bool closed = false;  ///< true once, in the connection's last sample
};

}  // namespace service
