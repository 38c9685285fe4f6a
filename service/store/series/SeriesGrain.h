// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <algorithm>
#include <array>
#include <chrono>
#include <cstddef>

#include "service/traffic/Moment.h"

namespace service {

/** How coarse the series are from some age on. */
struct SeriesGrain {
    std::chrono::seconds length;  ///< of an interval, of whose rows the last one is kept
    std::chrono::seconds age;
    std::chrono::seconds window;  ///< is made coarse at once: a multiple of `length`, and of finer windows
};

/** From the finest on; what is younger than the first keeps every second. Each length is a multiple of the finer ones. */
inline constexpr std::array<SeriesGrain, 3> seriesGrains = {{
    {std::chrono::seconds(10), std::chrono::hours(2), std::chrono::minutes(10)},
    {std::chrono::minutes(1), std::chrono::days(2), std::chrono::hours(1)},
    {std::chrono::hours(1), std::chrono::days(30), std::chrono::days(1)},
}};

/** The end of the interval that `moment` is in; an interval is without its beginning and with its end, in UTC. */
inline Moment intervalEnd(Moment moment, std::chrono::seconds length) {
    const Moment last = moment - std::chrono::seconds(1);
    return last - last.time_since_epoch() % length + length;
}

/**
 * Up to where each of `seriesGrains` holds, to the end of an interval; where several do it is the coarsest.
 *
 * Readers obey this alone: at the ends of intervals all series tell the truth, in between they are interpolated. So it
 * does not matter which of the rows within an interval are still there, and the applications' sum is that of all
 * everywhere, less a byte for each that rounding costs within an interval.
 */
struct SeriesGrains {
    std::array<Moment, seriesGrains.size()> until{};

    /** Of the interval that `moment` is in; a second where all is kept. */
    std::chrono::seconds lengthAt(Moment moment) const {
        for (std::size_t i = seriesGrains.size(); i-- > 0;) {
            if (moment <= until[i]) {
                return seriesGrains[i].length;
            }
        }
        return std::chrono::seconds(1);
    }

    /** Everything after `moment`, the end of an interval, keeps every second from now on. */
    void endAt(Moment moment) {
        for (Moment& end : until) {
            end = std::min(end, moment);
        }
    }

    bool operator==(const SeriesGrains&) const = default;
};

}  // namespace service
