// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <array>
#include <chrono>
#include <cstdint>
#include <vector>

#include "service/traffic/TrafficSample.h"

namespace service {

/** The hours in which somebody uses an application. */
struct DemoHabit {
    std::array<int, 24> tenths{};  ///< chance of each hour of the day, midnight first, in tenths
    double weekday = 1;            ///< weight of Monday to Friday
    double weekend = 1;            ///< weight of Saturday and Sunday
};

/** Connections of one kind that an application keeps opening: to whom, how often, how long, how fast. */
struct DemoFlow {
    std::int32_t protocol = 6;  ///< IP protocol number: 1 ICMP, 6 TCP, 17 UDP, 58 ICMPv6
    Direction direction = Direction::Output;
    std::uint16_t port = 0;  ///< the serving end's: ours for Input, else theirs; 0 for protocols without
    bool inLan = false;      ///< the peers are in the local network
    int hosts = 1;           ///< how many peers there are
    double ipv6Share = 0;    ///< of the connections, 0 to 1
    int lanes = 1;           ///< most connections at the same time
    std::chrono::seconds life{1};  ///< mean
    std::chrono::seconds pause{
        60};              ///< mean, from the end of one connection to the opening of its lane's next
    double received = 0;  ///< mean bytes of payload per second while open
    double sent = 0;      ///< likewise
    double swing = 0.9;   ///< how far the rate strays from its mean, 0 (steady) to 1 (falls to nothing)
};

/** One application of the demo and what it does all year. */
struct DemoProfile {
    const char* name;
    const char* path;
    DemoHabit habit;
    double keenness = 1;  ///< scales the habit's chances, 0 to 1
    std::vector<DemoFlow> flows;
    int firstDaysAgo = 366;  ///< in use since that many days before the scene's present
    int lastDaysAgo = 0;     ///< not used any more since that many days before; 0: still in use
};

}  // namespace service
