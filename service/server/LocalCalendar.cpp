// SPDX-License-Identifier: GPL-3.0-or-later
#include "service/server/LocalCalendar.h"

#include <algorithm>
#include <chrono>
#include <ctime>

namespace service {

namespace {

constexpr int firstYear = 1970;
constexpr int lastYear = 9999;

Time clamped(const Time& time) {
    if (time.year < firstYear) {
        return {1, 1, firstYear, 0, 0, 0};
    }
    if (time.year > lastYear) {
        return {31, 12, lastYear, 59, 59, 23};
    }
    const int month = std::clamp(time.month, 1, 12);
    const std::chrono::year_month_day_last monthEnd =
        std::chrono::year{time.year} / static_cast<unsigned>(month) / std::chrono::last;
    const int lastDay = static_cast<int>(static_cast<unsigned>(monthEnd.day()));
    return {std::clamp(time.day, 1, lastDay),
            month,
            time.year,
            std::clamp(time.second, 0, 59),
            std::clamp(time.minute, 0, 59),
            std::clamp(time.hour, 0, 23)};
}

/** The clock's face read as if it showed UTC. */
Moment asUtc(const Time& time) {
    const std::chrono::year_month_day day{std::chrono::year{time.year},
                                          std::chrono::month{static_cast<unsigned>(time.month)},
                                          std::chrono::day{static_cast<unsigned>(time.day)}};
    return std::chrono::sys_days{day} + std::chrono::hours{time.hour} + std::chrono::minutes{time.minute} +
           std::chrono::seconds{time.second};
}

/** How far the local clock is ahead of UTC at that moment. */
std::chrono::seconds offsetAt(Moment moment) {
    const std::time_t seconds = moment.time_since_epoch().count();
    std::tm local{};
    ::localtime_r(&seconds, &local);
    return std::chrono::seconds{local.tm_gmtoff};
}

}  // namespace

Time LocalCalendar::fromMoment(Moment moment) {
    return Time::fromEpoch(moment.time_since_epoch().count());
}

Moment LocalCalendar::toMoment(const Time& time) {
    using std::chrono::days;
    ::tzset();  // localtime_r alone keeps the zone that the process started in
    const Moment face = asUtc(clamped(time));
    // No offset reaches a whole day, so these two are in force on either side of any change near that time.
    const std::chrono::seconds before = offsetAt(face - days{1});
    const std::chrono::seconds after = offsetAt(face + days{1});
    const Moment early = face - std::max(before, after);
    if (early + offsetAt(early) == face) {
        return early;
    }
    const Moment late = face - std::min(before, after);
    if (late + offsetAt(late) == face) {
        return late;
    }
    return face - before;  // skipped: the clock as it ran before the change leads past the gap
}

}  // namespace service
