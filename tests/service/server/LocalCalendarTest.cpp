// SPDX-License-Identifier: GPL-3.0-or-later
#include "service/server/LocalCalendar.h"

#include <gtest/gtest.h>
#include <time.h>

#include <cstdlib>
#include <limits>
#include <ostream>

namespace service {

namespace {

using namespace std::chrono_literals;

struct Conversion {
    const char* zone;
    Time local;
    Moment utc;
    Time localOfUtc;  ///< what that moment reads as: another time than `local` where the clock skipped it

    friend void PrintTo(const Conversion& conversion, std::ostream* out) {
        *out << conversion.zone << " " << Time::toString(conversion.local);
    }
};

constexpr Moment utc(std::chrono::year_month_day day, std::chrono::minutes time) {
    return std::chrono::sys_days{day} + time;
}

void useZone(const char* zone) {
    ::setenv("TZ", zone, 1);
}

}  // namespace

class LocalCalendarTest : public testing::TestWithParam<Conversion> {
  protected:
    ~LocalCalendarTest() override {
        ::unsetenv("TZ");
        ::tzset();
    }
};

TEST_P(LocalCalendarTest, FollowsTheRulesOfTheZoneAtThatMoment) {
    const Conversion& expected = GetParam();
    useZone(expected.zone);
    EXPECT_EQ(LocalCalendar::toMoment(expected.local), expected.utc);
    EXPECT_EQ(LocalCalendar::fromMoment(expected.utc), expected.localOfUtc);
}

INSTANTIATE_TEST_SUITE_P(
    Zones, LocalCalendarTest,
    testing::Values(
        Conversion{
            "Europe/Berlin", {15, 1, 2024, 5, 0, 12}, utc(2024y / 1 / 15, 11h) + 5s, {15, 1, 2024, 5, 0, 12}},
        Conversion{
            "Europe/Berlin", {15, 7, 2024, 5, 0, 12}, utc(2024y / 7 / 15, 10h) + 5s, {15, 7, 2024, 5, 0, 12}},
        // twice that night: the first is meant
        Conversion{
            "Europe/Berlin", {27, 10, 2024, 0, 30, 2}, utc(2024y / 10 / 27, 30min), {27, 10, 2024, 0, 30, 2}},
        // skipped that night
        Conversion{
            "Europe/Berlin", {31, 3, 2024, 0, 30, 2}, utc(2024y / 3 / 31, 90min), {31, 3, 2024, 0, 30, 3}},
        // half an hour of daylight saving
        Conversion{"Australia/Lord_Howe",
                   {7, 4, 2024, 0, 45, 1},
                   utc(2024y / 4 / 6, 14h + 45min),
                   {7, 4, 2024, 0, 45, 1}},
        Conversion{"Australia/Lord_Howe",
                   {6, 10, 2024, 0, 15, 2},
                   utc(2024y / 10 / 5, 15h + 45min),
                   {6, 10, 2024, 0, 45, 2}},
        // a whole day that never was
        Conversion{
            "Pacific/Apia", {30, 12, 2011, 0, 0, 12}, utc(2011y / 12 / 30, 22h), {31, 12, 2011, 0, 0, 12}}));

TEST_F(LocalCalendarTest, EveryQuarterOfAYearComesBackExceptTheRepeatedOnes) {
    for (const char* zone :
         {"UTC", "Europe/Berlin", "Australia/Lord_Howe", "America/St_Johns", "Asia/Kathmandu"}) {
        useZone(zone);
        int moved = 0;
        for (Moment moment = utc(2024y / 1 / 1, 0h); moment < utc(2025y / 1 / 1, 0h); moment += 15min) {
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
    const Moment last = utc(9999y / 12 / 31, 23h + 59min) + 59s;
    EXPECT_EQ(LocalCalendar::toMoment(Time()), Moment{});
    EXPECT_EQ(LocalCalendar::toMoment({least, least, least, least, least, least}), Moment{});
    EXPECT_EQ(LocalCalendar::toMoment({most, most, most, most, most, most}), last);
    EXPECT_EQ(LocalCalendar::toMoment({1, 1, most, 0, 0, 0}), last);
    EXPECT_EQ(LocalCalendar::toMoment({31, 2, 2024, 0, 0, 0}), utc(2024y / 2 / 29, 0h));
    EXPECT_EQ(LocalCalendar::toMoment({0, 0, 2024, 99, 99, 99}), utc(2024y / 1 / 1, 23h + 59min) + 59s);
}

}  // namespace service
