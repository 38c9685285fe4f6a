// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/charts/HistoryRangePickers.h"

#include <QCalendarWidget>
#include <QDateTimeEdit>
#include <QEvent>
#include <QLocale>
#include <QSignalBlocker>
#include <QTextCharFormat>

#include "daemon/DateConversion.h"
#include "ui/charts/ConnectionText.h"

namespace {

/** The link carries calendar fields, and so a picker means what the link makes of its fields. */
QDateTime dateOf(const QDate& date, const QTime& time) {
    return TimeToNSDate(
        Time(date.day(), date.month(), date.year(), time.second(), time.minute(), time.hour()));
}

QDateTime pickedTime(const QDateTimeEdit& edit) {
    return dateOf(edit.date(), edit.time());
}

/** No bar in the accent's colour above the days, and no red: that is a line of the chart. */
void calm(QCalendarWidget& calendar) {
    const QPalette palette = calendar.palette();
    if (auto* bar = calendar.findChild<QWidget*>("qt_calendar_navigationbar")) {
        QPalette quiet = palette;
        quiet.setColor(QPalette::Highlight, palette.color(QPalette::Button));
        quiet.setColor(QPalette::HighlightedText, palette.color(QPalette::ButtonText));
        bar->setPalette(quiet);
    }
    QTextCharFormat text;
    text.setForeground(palette.text());
    for (const Qt::DayOfWeek day : {Qt::Saturday, Qt::Sunday}) {
        calendar.setWeekdayTextFormat(day, text);
    }
}

}  // namespace

HistoryRangePickers::HistoryRangePickers(const Picker& start, const Picker& end)
    : m_Start(start), m_End(end) {
    setup(m_Start);
    setup(m_End);
    connect(m_Start.edit, &QDateTimeEdit::dateTimeChanged, this, &HistoryRangePickers::startTimeChanged);
    connect(m_End.edit, &QDateTimeEdit::dateTimeChanged, this, &HistoryRangePickers::endTimeChanged);
}

void HistoryRangePickers::setup(const Picker& picker) {
    picker.edit->setDisplayFormat(shortDateFormat(picker.edit->locale()));
    calm(*picker.calendar);
    picker.calendar->installEventFilter(this);
    connect(picker.edit, &QDateTimeEdit::dateTimeChanged, this, &HistoryRangePickers::showInCalendars);
    connect(picker.calendar, &QCalendarWidget::selectionChanged, picker.edit, [picker] {
        // Not `setDate`: where the clock skips the hour on that day, it would give the earliest date of all.
        picker.edit->setDateTime(dateOf(picker.calendar->selectedDate(), picker.edit->time()));
    });
}

bool HistoryRangePickers::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::PaletteChange) {
        calm(*static_cast<QCalendarWidget*>(watched));
    }
    return QObject::eventFilter(watched, event);
}

QDateTime HistoryRangePickers::startTime() const {
    return pickedTime(*m_Start.edit);
}

QDateTime HistoryRangePickers::endTime() const {
    return pickedTime(*m_End.edit);
}

/** Limits that get in the way of each other would move values silently: none while the values are set. */
void HistoryRangePickers::setRange(const QDateTime& startTime, const QDateTime& endTime) {
    const QSignalBlocker startBlocker(m_Start.edit);
    const QSignalBlocker endBlocker(m_End.edit);
    m_Start.edit->clearMinimumDateTime();
    m_Start.edit->clearMaximumDateTime();
    m_End.edit->clearMinimumDateTime();
    if (startTime.isValid()) {
        m_Start.edit->setDateTime(startTime.toLocalTime());
    }
    if (endTime.isValid()) {
        m_End.edit->setDateTime(endTime.toLocalTime());
    }
    limitStartTime();
    if (m_EarliestTime.isValid()) {
        m_Start.edit->setMinimumDateTime(m_EarliestTime);
    }
    limitEndTime();
}

void HistoryRangePickers::setEarliestTime(const QDateTime& time) {
    m_EarliestTime = time;
    setRange(QDateTime(), QDateTime());
}

void HistoryRangePickers::limitEndTime() {
    m_End.edit->setMinimumDateTime(m_Start.edit->dateTime());
    showInCalendars();
}

void HistoryRangePickers::limitStartTime() {
    m_Start.edit->setMaximumDateTime(m_End.edit->dateTime());
    showInCalendars();
}

void HistoryRangePickers::showInCalendars() {
    for (const Picker& picker : {m_Start, m_End}) {
        const QSignalBlocker blocker(picker.calendar);
        picker.calendar->setDateRange(picker.edit->minimumDate(), picker.edit->maximumDate());
        picker.calendar->setSelectedDate(picker.edit->date());
    }
}
