// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <QTimeZone>
#include <cstdlib>
#include <ctime>

#include "daemon/ApplicationInfo.h"
#include "daemon/DateConversion.h"

namespace {

std::shared_ptr<const ApplicationInfo> applicationAt(const QString& path) {
    return ApplicationInfo::appInfoWithId(1, "Name", path, 100, 50, 60, 20, 50, 10, {}, {});
}

TEST(ApplicationInfo, FindsItsBundle) {
    const auto bundleOf = [](const QString& path) { return applicationAt(path)->bundlePath(); };
    EXPECT_EQ(bundleOf("/Applications/Foo.app/Contents/MacOS/Foo"), "/Applications/Foo.app");
    EXPECT_EQ(bundleOf("/A.framework/B.app/C.app/D"), "/A.framework/B.app");
    EXPECT_EQ(bundleOf("/L/A.framework/Versions/A/tool"), "/L/A.framework");
    EXPECT_EQ(bundleOf("/L/A.bundle/tool"), "/L/A.bundle");
    EXPECT_EQ(bundleOf("/usr/bin/curl"), "/usr/bin/curl");
    EXPECT_EQ(bundleOf(""), "/mach_kernel");
    EXPECT_FALSE(applicationAt("/L/A.bundle/tool")->isBundle());
    EXPECT_TRUE(applicationAt("/L/A.framework/tool")->isBundle());
}

TEST(ApplicationInfo, OtherTrafficIsWhatRemainsAlsoBelowZero) {
    EXPECT_EQ(applicationAt("")->otherReceivedBytes(), -10);
    EXPECT_EQ(applicationAt("")->otherSendedBytes(), 20);
    EXPECT_EQ(ApplicationInfo().id(), -1);
}

TEST(DateConversion, KeepsLocalCalendarTimeToTheSecond) {
    setenv("TZ", "America/New_York", 1);
    tzset();
    const QDateTime utc(QDate(2008, 3, 7), QTime(14, 5, 59, 999), Qt::UTC);
    EXPECT_EQ(NSDateToTime(utc), Time(7, 3, 2008, 59, 5, 9));
    EXPECT_EQ(TimeToNSDate(NSDateToTime(utc)).toUTC(), utc.addMSecs(-999));
}

TEST(DateConversion, MeansTheFirstOfAnHourThatOccursTwiceWhateverWasConvertedBefore) {
    setenv("TZ", "America/New_York", 1);
    tzset();
    for (const int month : {1, 7}) {
        TimeToNSDate(Time(1, month, 2008, 0, 0, 12));
        const QDateTime first = TimeToNSDate(Time(2, 11, 2008, 0, 30, 1));
        EXPECT_EQ(first.toUTC(), QDateTime(QDate(2008, 11, 2), QTime(5, 30), Qt::UTC));
        const QDateTime skipped = TimeToNSDate(Time(9, 3, 2008, 0, 30, 2));
        EXPECT_EQ(skipped.toUTC(), QDateTime(QDate(2008, 3, 9), QTime(7, 30), Qt::UTC));
    }
}

TEST(DateConversion, FieldsBeyondTheirRangeCarryOver) {
    EXPECT_EQ(TimeToNSDate(Time(30, 2, 2008, 61, 59, 9)), QDateTime(QDate(2008, 3, 1), QTime(10, 0, 1)));
    EXPECT_EQ(TimeToNSDate(Time(31, 7, 2008, 60, 0, 9)), QDateTime(QDate(2008, 7, 31), QTime(9, 1, 0)));
}

TEST(DateConversion, WhatIsNoDateIsUnset) {
    EXPECT_FALSE(TimeToNSDate(Time()).isValid());
    EXPECT_FALSE(TimeToNSDate(Time(-2147483647, 2147483647, -2147483647, 0, 0, 0)).isValid());
    EXPECT_EQ(NSDateToTime(QDateTime()), Time());
}

}  // namespace
