// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/charts/HistoryRangePickers.h"

#include <QLocale>
#include <QSignalBlocker>

#include "controls/Calendar.h"
#include "controls/DateTimeEdit.h"
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

}  // namespace

HistoryRangePickers::HistoryRangePickers(const Picker& start, const Picker& end)
    : m_Start(start), m_End(end) {
    setup(m_Start);
    setup(m_End);
    connect(m_Start.edit, &DateTimeEdit::picked, this, &HistoryRangePickers::startTimeChanged);
    connect(m_End.edit, &DateTimeEdit::picked, this, &HistoryRangePickers::endTimeChanged);
}

void HistoryRangePickers::setup(const Picker& picker) {
    picker.edit->setDisplayFormat(shortDateFormat(picker.edit->locale()));
    connect(picker.edit, &DateTimeEdit::picked, this, &HistoryRangePickers::showInCalendars);
    connect(picker.calendar, &Calendar::selectionChanged, picker.edit, [picker] {
        // Not `setDate`: where the clock skips the hour on that day, it would give the earliest date of all.
        picker.edit->setDateTime(dateOf(picker.calendar->selectedDate(), picker.edit->time()));
    });
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
    finishEditing();
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

void HistoryRangePickers::finishEditing() {
    m_Start.edit->finishEditing();
    m_End.edit->finishEditing();
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
