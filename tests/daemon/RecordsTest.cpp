// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <QTimeZone>
#include <cstdlib>
#include <ctime>

#include "daemon/ApplicationInfo.h"
#include "daemon/DateConversion.h"
#include "daemon/TotalStatisticInfo.h"

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

TEST(ApplicationInfo, AlwaysHasAnIcon) {
    EXPECT_FALSE(applicationAt("")->icon().isNull());
    EXPECT_FALSE(applicationAt("/no/such/program")->icon().isNull());
}

TEST(TotalStatisticInfo, EndsNow) {
    const QDateTime before = QDateTime::currentDateTime();
    const QDateTime end = TotalStatisticInfo().endTime();
    EXPECT_TRUE(before <= end && end <= QDateTime::currentDateTime());
}

TEST(DateConversion, KeepsLocalCalendarTimeToTheSecond) {
    setenv("TZ", "America/New_York", 1);
    tzset();
    const QDateTime utc(QDate(2008, 3, 7), QTime(14, 5, 59, 999), Qt::UTC);
    EXPECT_EQ(NSDateToTime(utc), Time(7, 3, 2008, 59, 5, 9));
    EXPECT_EQ(TimeToNSDate(NSDateToTime(utc)).toUTC(), utc.addMSecs(-999));
}

TEST(DateConversion, WhatIsNoDateIsUnset) {
    EXPECT_FALSE(TimeToNSDate(Time()).isValid());
    EXPECT_FALSE(TimeToNSDate(Time(30, 2, 2008, 0, 0, 0)).isValid());
    EXPECT_FALSE(TimeToNSDate(Time(1, 1, 2008, 61, 0, 0)).isValid());
    EXPECT_FALSE(TimeToNSDate(Time(-2147483647, 2147483647, -2147483647, 0, 0, 0)).isValid());
    EXPECT_EQ(NSDateToTime(QDateTime()), Time());
}

}  // namespace
