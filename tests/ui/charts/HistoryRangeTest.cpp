// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <QTest>
#include <QTimeZone>
#include <ctime>

#include "controls/Calendar.h"
#include "controls/DateTimeEdit.h"
#include "ui/charts/HistoryGraphicMath.h"
#include "ui/charts/HistoryRangePickers.h"
#include "ui/charts/HistoryRangePresets.h"

namespace {

constexpr double day = 86400;

TEST(HistoryGraphicMath, TheGridIsTheLongestUnitThatFitsAndStartsOverAtThousandDays) {
    struct Case {
        double span, grid;
    };
    for (const auto& [span, grid] :
         {Case{1, 1}, Case{9.99, 1}, Case{10, 10}, Case{599, 60}, Case{36000, 36000}, Case{day - 1, 36000},
          Case{day, day}, Case{999.9 * day, 100 * day}, Case{1000 * day, 1}}) {
        EXPECT_EQ(HistoryGraphicMath::gridStep(span), grid) << span;
    }
}

TEST(HistoryGraphicMath, ARangeIsTheSecondBeforeItsEndAtLeast) {
    for (const double start : {1000.0, 999.5, 2000.0}) {
        const HistoryGraphicMath math(start, 1000);
        EXPECT_EQ(math.start, 999);
        EXPECT_EQ(math.step, 1);
        EXPECT_EQ(math.limit(), 5);
    }
    EXPECT_LT(HistoryGraphicMath(0, 3600).progress(3744), 100);
}

/** In a zone whose clock goes back an hour on 25 October 2026 at 3:00, and forward on 29 March at 2:00. */
class HistoryRangePickersTest : public testing::Test {
  protected:
    HistoryRangePickersTest() {
        qputenv("TZ", "Europe/Berlin");
        tzset();
    }

    static QDateTime date(int month, int day, int hour = 0, int minute = 0) {
        return {QDate(2026, month, day), QTime(hour, minute)};
    }

    void followEachOther() {
        QObject::connect(&m_Pickers, &HistoryRangePickers::startTimeChanged, &m_Pickers,
                         &HistoryRangePickers::limitEndTime);
        QObject::connect(&m_Pickers, &HistoryRangePickers::endTimeChanged, &m_Pickers,
                         &HistoryRangePickers::limitStartTime);
    }

    DateTimeEdit m_Start;
    DateTimeEdit m_End;
    Calendar m_StartCalendar;
    Calendar m_EndCalendar;
    HistoryRangePickers m_Pickers{{&m_Start, &m_StartCalendar}, {&m_End, &m_EndCalendar}};
};

TEST_F(HistoryRangePickersTest, ARangeReplacesALaterAndAnEarlierOneWhole) {
    m_Pickers.setEarliestTime(date(1, 1));
    for (const int month : {6, 9, 2}) {
        m_Pickers.setRange(date(month, 3), date(month, 9));
        EXPECT_EQ(m_Pickers.startTime(), date(month, 3));
        EXPECT_EQ(m_Pickers.endTime(), date(month, 9));
        EXPECT_EQ(m_Start.minimumDateTime(), date(1, 1));
        EXPECT_EQ(m_Start.maximumDateTime(), date(month, 9));
        EXPECT_EQ(m_End.minimumDateTime(), date(month, 3));
        EXPECT_EQ(m_StartCalendar.selectedDate(), QDate(2026, month, 3));
    }
    m_Pickers.setRange(QDateTime(QDate(2019, 1, 1), QTime()), date(5, 1));
    EXPECT_EQ(m_Pickers.startTime(), date(1, 1));
    m_Pickers.setEarliestTime(date(2, 1));
    EXPECT_EQ(m_Pickers.startTime(), date(2, 1));
    m_Pickers.setRange(QDateTime(), date(6, 1));
    EXPECT_EQ(m_Pickers.startTime(), date(2, 1));
}

TEST_F(HistoryRangePickersTest, TheUserCannotLeaveTheLimitsByPickerOrCalendar) {
    followEachOther();
    m_Pickers.setEarliestTime(date(1, 1));
    m_Pickers.setRange(date(6, 3), date(6, 9));
    m_Start.setDateTime(date(7, 1));
    EXPECT_EQ(m_Pickers.startTime(), date(6, 9));
    m_StartCalendar.setSelectedDate(QDate(2026, 6, 5));
    EXPECT_EQ(m_Pickers.startTime(), date(6, 5));
    m_End.setDateTime(date(6, 1));
    EXPECT_EQ(m_Pickers.endTime(), date(6, 5));
    m_EndCalendar.setSelectedDate(QDate(2026, 6, 20));
    m_Start.setDateTime(date(6, 19));
    EXPECT_EQ(m_Pickers.startTime(), date(6, 19));
    EXPECT_EQ(m_Pickers.endTime(), date(6, 20));
}

TEST_F(HistoryRangePickersTest, AnyDateCanBeTypedAndIsMovedToTheLimitWhenThatIsFinished) {
    followEachOther();
    m_Pickers.setEarliestTime(date(1, 15));
    m_Pickers.setRange(date(1, 26), date(11, 21));
    m_Start.setDisplayFormat("dd.MM.yyyy HH:mm");
    const auto type = [](DateTimeEdit& edit, const QString& text) {
        edit.setSelectedSection(QDateTimeEdit::DaySection);
        QTest::keyClicks(&edit, text);
    };
    const QDateTime before = m_Pickers.startTime();
    type(m_Start, "0208");
    EXPECT_EQ(m_Start.text(), "02.08.2026 00:00");
    EXPECT_EQ(m_Pickers.startTime(), before) << "until it is finished";
    QTest::keyClick(&m_Start, Qt::Key_Return);
    EXPECT_EQ(m_Pickers.startTime(), date(8, 2));
    EXPECT_EQ(m_End.minimumDateTime(), date(8, 2));
    type(m_Start, "3012");                    // after the end
    QTest::keyClick(&m_Start, Qt::Key_Left);  // which makes Qt take it
    EXPECT_EQ(m_Pickers.endTime(), date(11, 21));
    m_Pickers.finishEditing();
    EXPECT_EQ(m_End.minimumDateTime(), date(11, 21));
    EXPECT_EQ(m_Pickers.startTime(), date(11, 21));
    type(m_Start, "03012019");              // before the earliest
    QTest::keyClick(&m_Start, Qt::Key_Up);  // a step further
    EXPECT_EQ(m_Pickers.startTime().date().year(), 2026);
    EXPECT_EQ(m_Start.minimumDateTime(), date(1, 15));
    EXPECT_EQ(m_Start.maximumDateTime(), date(11, 21));
}

TEST_F(HistoryRangePickersTest, OfAnHourThatOccursTwiceTheFirstIsMeantAndASkippedOneMovesOn) {
    const auto utc = [](int month, int day, int hour, int minute) {
        return QDateTime(QDate(2026, month, day), QTime(hour, minute), Qt::UTC);
    };
    m_Pickers.setRange(date(3, 28, 2, 30), utc(10, 25, 1, 30));
    m_StartCalendar.setSelectedDate(QDate(2026, 3, 29));
    EXPECT_EQ(m_Pickers.startTime(), utc(3, 29, 1, 30));
    EXPECT_EQ(m_End.time(), QTime(2, 30));
    EXPECT_EQ(m_Pickers.endTime(), utc(10, 25, 0, 30));
}

TEST_F(HistoryRangePickersTest, PresetsCountTheCalendarsDays) {
    const QDateTime now = date(10, 26, 12);
    const QDateTime first = date(2, 3, 4);
    const auto range = [&](int preset) { return HistoryRangePresets::range(preset, now, first); };
    using Range = std::pair<QDateTime, QDateTime>;
    EXPECT_EQ(range(HistoryRangePresets::LastHour), Range(date(10, 26, 11), now));
    EXPECT_EQ(range(HistoryRangePresets::Today), Range(date(10, 26), now));
    const auto [start, end] = range(HistoryRangePresets::Yesterday);
    EXPECT_EQ(start, date(10, 25));
    EXPECT_EQ(start.secsTo(end), 25 * 3600);
    EXPECT_EQ(range(HistoryRangePresets::SevenDays), Range(date(10, 19, 12), now));
    EXPECT_EQ(range(HistoryRangePresets::ThirtyDays), Range(date(9, 26, 12), now));
    EXPECT_EQ(range(HistoryRangePresets::ThisMonth), Range(date(10, 1), now));
    EXPECT_EQ(range(HistoryRangePresets::All), Range(first, now));
    EXPECT_EQ(HistoryRangePresets::names().size(), HistoryRangePresets::All + 1);
}

}  // namespace
