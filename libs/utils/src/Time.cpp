// SPDX-License-Identifier: GPL-3.0-or-later
#include "libs/utils/src/Time.h"

#include <array>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <vector>

#include "libs/utils/src/StringUtils.h"
#include "libs/utils/src/TimeStringSplitterValidator.h"

namespace {

std::tm localClock(std::time_t moment) {
    tzset();  // localtime_r alone keeps the zone that the process started in
    std::tm local{};
    localtime_r(&moment, &local);
    return local;
}

}  // namespace

Time::Time(std::int32_t day, std::int32_t month, std::int32_t year, std::int32_t second, std::int32_t minute,
           std::int32_t hour)
    : day(day), month(month), year(year), second(second), minute(minute), hour(hour) {}

long Time::toEpoch(const Time& time) {
    std::tm local = toCalendar(time);
    local.tm_isdst = localClock(std::time(nullptr)).tm_isdst;
    return std::mktime(&local);
}

Time Time::fromEpoch(long secondsSinceEpoch) {
    const std::tm local = localClock(secondsSinceEpoch);
    return Time(local.tm_mday, local.tm_mon + 1, local.tm_year + 1900, local.tm_sec, local.tm_min,
                local.tm_hour);
}

Time Time::now() {
    return fromEpoch(std::time(nullptr));
}

std::tm Time::toCalendar(const Time& time) {
    std::tm fields{};
    fields.tm_sec = time.second;
    fields.tm_min = time.minute;
    fields.tm_hour = time.hour;
    fields.tm_mday = time.day;
    fields.tm_mon = time.month - 1;
    fields.tm_year = time.year - 1900;
    return fields;
}

std::string Time::toString(const Time& time) {
    std::array<char, 80> text{};  // six integers of at most 11 characters and five separators
    std::snprintf(text.data(), text.size(), "%04i-%02i-%02i %02i:%02i:%02i", time.year, time.month, time.day,
                  time.hour, time.minute, time.second);
    return text.data();
}

Time Time::fromString(const std::string& text) {
    Time time;
    const std::array fields{&time.year, &time.month, &time.day, &time.hour, &time.minute, &time.second};
    const std::vector<std::string> tokens = splitStr<TimeStringSplitterValidator>(text);
    for (std::size_t i = 0; i < fields.size() && i < tokens.size(); ++i) {
        *fields[i] = std::atoi(tokens[i].c_str());
    }
    return time;
}
