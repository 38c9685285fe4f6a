// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <ctime>
#include <string>

/**
 * A calendar time on the machine's local clock, without a zone. The fields stand in the order in which they
 * travel. All zero means: not set. No range is checked.
 */
class Time {
  public:
    Time() = default;
    Time(std::int32_t day, std::int32_t month, std::int32_t year, std::int32_t second, std::int32_t minute,
         std::int32_t hour);

    std::int32_t day = 0;    ///< 1-31
    std::int32_t month = 0;  ///< 1-12
    std::int32_t year = 0;   ///< full year, such as 2008
    std::int32_t second = 0;
    std::int32_t minute = 0;
    std::int32_t hour = 0;

    bool operator==(const Time&) const = default;

    /**
     * Seconds since the epoch, with the daylight-saving flag of the present moment whatever the season of
     * `time`: a time in the other half of the year converts with today's offset. That is meant so.
     */
    static long toEpoch(const Time& time);
    static Time fromEpoch(long secondsSinceEpoch);
    static Time now();

    /** The same fields as C has them, with nothing known of daylight saving (0). */
    static std::tm toCalendar(const Time& time);

    /** "2008-03-07 09:05:00" */
    static std::string toString(const Time& time);

    /** Reads what `toString` writes; missing parts stay 0, what follows the seconds is ignored. */
    static Time fromString(const std::string& text);

    /** 24 bytes: day, month, year, second, minute, hour. False at the first field that fails. */
    template <class Serializer>
    bool SerializeTo(Serializer& serializer) const {
        return serializer.WriteInt(day) && serializer.WriteInt(month) && serializer.WriteInt(year) &&
               serializer.WriteInt(second) && serializer.WriteInt(minute) && serializer.WriteInt(hour);
    }

    template <class Serializer>
    bool UnserializeFrom(Serializer& serializer) {
        return serializer.ReadInt(day) && serializer.ReadInt(month) && serializer.ReadInt(year) &&
               serializer.ReadInt(second) && serializer.ReadInt(minute) && serializer.ReadInt(hour);
    }
};
