// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/charts/TrafficFormat.h"

#include <gtest/gtest.h>

#include <cmath>
#include <ctime>
#include <thread>

namespace {

QString textIn(const char* zone, const char* locale, const QDateTime& moment) {
    qputenv("TZ", zone);
    qputenv("LC_ALL", locale);
    tzset();
    return NSDateToNSString(moment.toLocalTime());
}

const QDateTime summer(QDate(2026, 7, 26), QTime(19, 46, 5), Qt::UTC);
const QDateTime winter(QDate(2026, 1, 2), QTime(3, 4, 5), Qt::UTC);

/** The first: ICU keeps parts of a locale of the process's past for this one. */
TEST(TrafficFormat, DatesAreAmericanWhereNoLocaleIsSet) {
    EXPECT_EQ(textIn("UTC", "C.UTF-8", summer).toStdString(), "Sunday, July 26, 2026 at 19:46:05 UTC");
}

TEST(TrafficFormat, DatesEndWithTheZoneOrWhereItSaidGmt) {
    struct Case {
        const char* zone;
        const char* locale;
        QDateTime moment;
        const char* expected;
    };
    const Case cases[] = {
        {"Europe/London", "en_GB.UTF-8", winter, "Friday, 2 January 2026 at 03:04:05 "},
        {"Europe/London", "en_GB.UTF-8", summer, "Sunday, 26 July 2026 at 20:46:05 BST"},
        {"Europe/Berlin", "de_DE.UTF-8", summer, "Sonntag, 26. Juli 2026 um 21:46:05 MESZ"},
        {"America/New_York", "en_US.UTF-8", summer, "Sunday, July 26, 2026 at 3:46:05 PM EDT"},
        {"America/New_York", "de_DE@euro", winter, "Donnerstag, 1. Januar 2026 um 22:04:05 "},
        {"<+0530>-05:30", "en_US.UTF-8", summer, "Monday, July 27, 2026 at 1:16:05 AM "},
        {"<+0530>-05:30", "fr_FR.UTF-8", summer, "lundi 27 juillet 2026 à 01:16:05 UTC+5:30"},
        // Their patterns put the zone in front of the time, where the cut would take the time away too.
        {"Europe/Berlin", "zh_CN.UTF-8", summer, "2026年7月26日星期日 21:46:05 "},
        {"Europe/Berlin", "vi_VN.UTF-8", summer, "lúc 21:46:05 Chủ Nhật, 26 tháng 7, 2026 "}};
    for (const auto& [zone, locale, moment, expected] : cases) {
        QString text = textIn(zone, locale, moment);
        text.replace(QChar(0x202f), ' ');  // the narrow blank before AM and PM, which not every ICU has
        EXPECT_EQ(text.toStdString(), expected);
    }
}

TEST(TrafficFormat, DatesMayBeWrittenOnSeveralThreadsAtOnce) {
    const QString expected = textIn("Europe/Berlin", "de_DE.UTF-8", summer);
    const auto write = [&expected] {
        for (int i = 0; i < 200; ++i) {
            EXPECT_EQ(NSDateToNSString(summer), expected);
        }
    };
    std::thread other(write);
    write();
    other.join();
    EXPECT_EQ(NSDateToNSString(QDateTime()), QString());
}

TEST(TrafficFormat, BytesAreShownInBinaryMegabytes) {
    EXPECT_EQ(bytesToNSString(0), "0.000");
    EXPECT_EQ(bytesToNSString(1), "0.000");
    EXPECT_EQ(bytesToNSString(1572864), "1.500");
    EXPECT_EQ(bytesToNSString(65536), "0.062");  // a tie, as printf rounds it
    EXPECT_EQ(bytesToNSString(-1048576), "-1.000");
    EXPECT_EQ(bytesToNSString(std::int64_t{1} << 62), "4398046511104.000");
    EXPECT_EQ(megabytesToNSString(bytesToMegabytes(524)), "0.000");
    EXPECT_EQ(megabytesToNSString(bytesToMegabytes(525)), "0.001");
}

TEST(TrafficFormat, TheGridStepIsTheFirstThatNeedsAtMostTenStepsToThePeak) {
    constexpr double powers[] = {10, 13, 14, 15, 16, 17, 19, 20, 23, 26, 27, 29, 30, 33, 36, 37, 39, 40};
    double below = -1e300;
    for (const double power : powers) {
        const double step = std::exp2(power);
        EXPECT_EQ(calcGraphicMeshHeightFromBytesPeak(10 * step), step);
        EXPECT_EQ(calcGraphicMeshHeightFromBytesPeak(std::nextafter(below, 1e300)), step);
        below = 10 * step;
    }
    EXPECT_EQ(calcGraphicMeshHeightFromBytesPeak(0), 1024);
    EXPECT_EQ(calcGraphicMeshHeightFromBytesPeak(20 * std::exp2(40)), std::exp2(40));
}

}  // namespace
