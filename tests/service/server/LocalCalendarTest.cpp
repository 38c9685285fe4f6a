// SPDX-License-Identifier: GPL-3.0-or-later
#include "service/server/LocalCalendar.h"

#include <gtest/gtest.h>
#include <time.h>

#include <cstdlib>
#include <limits>

namespace service {

namespace {

using namespace std::chrono_literals;

Moment utc(const char* text) {
    const Time time = Time::fromString(text);
    const std::chrono::year_month_day date(std::chrono::year(time.year), std::chrono::month(time.month),
                                           std::chrono::day(time.day));
    return std::chrono::sys_days(date) + time.hour * 1h + time.minute * 1min + time.second * 1s;
}

void useZone(const char* zone) {
    ::setenv("TZ", zone, 1);
}

}  // namespace

class LocalCalendarTest : public testing::Test {
  protected:
    ~LocalCalendarTest() override {
        ::unsetenv("TZ");
        ::tzset();
    }
};

TEST_F(LocalCalendarTest, FollowsTheRulesOfTheZoneAtThatMoment) {
    const char* conversions[][4] = {
        // zone, local time, UTC, and what that reads as, which is another time where the clock skipped this one
        {"Europe/Berlin", "2024-01-15 12:00:05", "2024-01-15 11:00:05", "2024-01-15 12:00:05"},
        {"Europe/Berlin", "2024-07-15 12:00:05", "2024-07-15 10:00:05", "2024-07-15 12:00:05"},
        // twice that night: the first is meant
        {"Europe/Berlin", "2024-10-27 02:30:00", "2024-10-27 00:30:00", "2024-10-27 02:30:00"},
        // skipped that night
        {"Europe/Berlin", "2024-03-31 02:30:00", "2024-03-31 01:30:00", "2024-03-31 03:30:00"},
        // half an hour of daylight saving
        {"Australia/Lord_Howe", "2024-04-07 01:45:00", "2024-04-06 14:45:00", "2024-04-07 01:45:00"},
        {"Australia/Lord_Howe", "2024-10-06 02:15:00", "2024-10-05 15:45:00", "2024-10-06 02:45:00"},
        // a whole day that never was
        {"Pacific/Apia", "2011-12-30 12:00:00", "2011-12-30 22:00:00", "2011-12-31 12:00:00"}};
    for (const auto& [zone, local, inUtc, localOfUtc] : conversions) {
        useZone(zone);
        EXPECT_EQ(LocalCalendar::toMoment(Time::fromString(local)), utc(inUtc)) << local;
        EXPECT_EQ(LocalCalendar::fromMoment(utc(inUtc)), Time::fromString(localOfUtc)) << local;
    }
}

TEST_F(LocalCalendarTest, EveryQuarterOfAYearComesBackExceptTheRepeatedOnes) {
    for (const char* zone :
         {"UTC", "Europe/Berlin", "Australia/Lord_Howe", "America/St_Johns", "Asia/Kathmandu"}) {
        useZone(zone);
        int moved = 0;
        for (Moment moment = utc("2024-01-01"); moment < utc("2025-01-01"); moment += 15min) {
            const Time local = LocalCalendar::fromMoment(moment);
            const Moment back = LocalCalendar::toMoment(local);
            ASSERT_LE(back, moment);
            ASSERT_EQ(LocalCalendar::fromMoment(back), local);
            moved += back != moment ? 1 : 0;
        }
        EXPECT_LE(moved, 4) << zone;
    }
}

TEST_F(LocalCalendarTest, AbsurdTimesBecomeTheNearestOnes) {
    useZone("UTC");
    constexpr std::int32_t most = std::numeric_limits<std::int32_t>::max();
    constexpr std::int32_t least = std::numeric_limits<std::int32_t>::min();
    const Moment last = utc("9999-12-31 23:59:59");
    EXPECT_EQ(LocalCalendar::toMoment(Time()), Moment{});
    EXPECT_EQ(LocalCalendar::toMoment({least, least, least, least, least, least}), Moment{});
    EXPECT_EQ(LocalCalendar::toMoment({most, most, most, most, most, most}), last);
    EXPECT_EQ(LocalCalendar::toMoment({1, 1, most, 0, 0, 0}), last);
    EXPECT_EQ(LocalCalendar::toMoment({31, 2, 2024, 0, 0, 0}), utc("2024-02-29"));
    EXPECT_EQ(LocalCalendar::toMoment({0, 0, 2024, 99, 99, 99}), utc("2024-01-01 23:59:59"));
}

}  // namespace service
