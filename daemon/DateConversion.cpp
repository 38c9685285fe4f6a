// SPDX-License-Identifier: GPL-3.0-or-later
#include "daemon/DateConversion.h"

Time NSDateToTime(const QDateTime& date) {
    if (!date.isValid()) {
        return {};
    }
    const QDateTime local = date.toLocalTime();
    const QDate day = local.date();
    const QTime clock = local.time();
    return Time(day.day(), day.month(), day.year(), clock.second(), clock.minute(), clock.hour());
}

QDateTime TimeToNSDate(const Time& time) {
    const QDate day(time.year, time.month, time.day);
    const QTime clock(time.hour, time.minute, time.second);
    return day.isValid() && clock.isValid() ? QDateTime(day, clock) : QDateTime();
}
