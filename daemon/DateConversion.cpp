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
    local = {};
    local.tm_sec = time.second;
    local.tm_min = time.minute;
    local.tm_hour = time.hour;
    local.tm_mday = time.day;
    local.tm_mon = time.month - 1;
    local.tm_year = time.year - 1900;
    local.tm_isdst = isDaylightSaving;
    return std::mktime(&local);
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
    // With the flag left open, C's calendar would decide on the hour that occurs twice by whatever it converted last.
    std::tm local;
    std::time_t epoch = epochOf(time, 1, local);
    if (epoch == -1 || local.tm_isdst <= 0) {
        epoch = epochOf(time, 0, local);
    }
    return epoch != -1 ? QDateTime::fromSecsSinceEpoch(epoch) : QDateTime();
}
