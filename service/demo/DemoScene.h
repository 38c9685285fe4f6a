// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <chrono>
#include <cstdint>

#include "service/traffic/Moment.h"

namespace service {

/** What a whole demo follows from: equal scenes give equal traffic, byte for byte. */
struct DemoScene {
    std::uint64_t seed = 1;
    Moment present;                     ///< where the written year ends and live traffic begins
    std::chrono::seconds utcOffset{0};  ///< of the user's days and nights, east of Greenwich positive

    /** The scene of a user in this machine's time zone; one offset serves the whole year, summer or winter.
     */
    static DemoScene here(Moment present);
};

}  // namespace service
