// SPDX-License-Identifier: GPL-3.0-or-later
#include "libs/utils/src/Time.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>

namespace {

TEST(Time, TextsHaveTheDatabasesForm) {
    const Time time(7, 3, 2008, 0, 5, 9);
    EXPECT_EQ(Time::toString(time), "2008-03-07 09:05:00");
    EXPECT_EQ(Time::fromString("2008-03-07 09:05:00"), time);
    EXPECT_EQ(Time::fromString("2008-03-07 09:05"), time);
    EXPECT_EQ(Time::fromString("2008--03"), Time(0, 3, 2008, 0, 0, 0));
    EXPECT_EQ(Time::fromString("1-2-3 4:5:6:7"), Time(3, 2, 1, 6, 5, 4));
    EXPECT_EQ(Time::fromString(""), Time());
    EXPECT_EQ(Time::toString(Time()), "0000-00-00 00:00:00");
}

TEST(Time, EpochUsesTodaysOffsetInEverySeason) {
    setenv("TZ", "Europe/Berlin", 1);
    tzset();
    const std::time_t present = std::time(nullptr);
    std::tm local{};
    localtime_r(&present, &local);
    const bool isSummer = local.tm_isdst > 0;
    const long july = 1215424800;     // 2008-07-07 10:00:00 UTC, 12:00 in Berlin's summer
    const long january = 1199700000;  // 2008-01-07 10:00:00 UTC, 11:00 in Berlin's winter
    EXPECT_EQ(Time::fromEpoch(july), Time(7, 7, 2008, 0, 0, 12));
    EXPECT_EQ(Time::fromEpoch(january), Time(7, 1, 2008, 0, 0, 11));
    EXPECT_EQ(Time::toEpoch(Time::fromEpoch(july)), july + (isSummer ? 0 : 3600));
    EXPECT_EQ(Time::toEpoch(Time::fromEpoch(january)), january - (isSummer ? 3600 : 0));
    setenv("TZ", "Asia/Tokyo", 1);
    EXPECT_EQ(Time::fromEpoch(january).hour, 19) << "the zone is the present one, not the first";
}

}  // namespace
