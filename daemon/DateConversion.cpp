// SPDX-License-Identifier: GPL-3.0-or-later
#include "daemon/DateConversion.h"

#include <algorithm>
#include <cstdlib>
#include <ctime>
#include <initializer_list>

namespace {

constexpr int largestField =
    1'000'000;  // of a calendar time that C's calendar can carry over without overflow

bool isUsable(const Time& time) {
    const std::initializer_list<int> fields{time.day,    time.month,  time.year,
                                            time.second, time.minute, time.hour};
    return time != Time() && std::all_of(fields.begin(), fields.end(), [](int field) {
               return field >= -largestField && field <= largestField;
           });
}

std::time_t epochOf(const Time& time, int isDaylightSaving, std::tm& local) {
    local = Time::toCalendar(time);
    local.tm_isdst = isDaylightSaving;
    return std::mktime(&local);
}

/**
 * Whether the zone's offset changes so near that a clock's reading may mean two moments or none: no change moves
 * the clock by more than a day.
 */
bool isNearChange(std::time_t epoch) {
    constexpr std::time_t day = 86'400;  // seconds
    const std::time_t dayBefore = epoch - day;
    const std::time_t dayAfter = epoch + day;
    std::tm before{};
    std::tm after{};
    return ::localtime_r(&dayBefore, &before) == nullptr || ::localtime_r(&dayAfter, &after) == nullptr ||
           before.tm_gmtoff != after.tm_gmtoff;
}

/** Of two moments the first. */
std::time_t firstEpochOf(const Time& time) {
    std::tm local;
    const std::time_t daylightSaving = epochOf(time, 1, local);
    return daylightSaving != -1 && local.tm_isdst > 0 ? daylightSaving : epochOf(time, 0, local);
}

}  // namespace

Time NSDateToTime(const QDateTime& date) {
    if (!date.isValid()) {
        return {};
    }
    const QDateTime local = date.toLocalTime();
    const QDate day = local.date();
    const QTime clock = local.time();
    return Time(day.day(), day.month(), day.year(), clock.second(), clock.minute(), clock.hour());
}

QDateTime TimeToNSDate(const Time& time) {
    if (!isUsable(time)) {
        return {};
    }
    // With the flag left open C's calendar decides on the hour that occurs twice by whatever it converted last. With
    // a flag that does not hold then, it searches years for a moment when it does: 20 us against 1.
    std::tm local;
    std::time_t epoch = epochOf(time, -1, local);
    if (epoch == -1 || isNearChange(epoch)) {
        epoch = firstEpochOf(time);
    }
    return epoch != -1 ? QDateTime::fromSecsSinceEpoch(epoch) : QDateTime();
}
