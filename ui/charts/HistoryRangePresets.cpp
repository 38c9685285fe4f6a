// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/charts/HistoryRangePresets.h"

QStringList HistoryRangePresets::names() {
    return {"Last hour", "Today", "Yesterday", "Last 7 days", "Last 30 days", "This month", "All"};
}

std::pair<QDateTime, QDateTime> HistoryRangePresets::range(int preset, const QDateTime& now,
                                                           const QDateTime& statisticsStart) {
    constexpr int hour = 60 * 60;
    const QDate today = now.date();
    switch (preset) {
        case LastHour:
            return {now.addSecs(-hour), now};
        case Today:
            return {today.startOfDay(), now};
        case Yesterday:
            return {today.addDays(-1).startOfDay(), today.startOfDay()};
        case SevenDays:
            return {now.addDays(-7), now};
        case ThirtyDays:
            return {now.addDays(-30), now};
        case ThisMonth:
            return {QDate(today.year(), today.month(), 1).startOfDay(), now};
        default:
            return {statisticsStart, now};
    }
}
