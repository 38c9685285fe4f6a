// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDateTime>
#include <QStringList>
#include <utility>

/** Ranges that users ask for by name. */
class HistoryRangePresets {
  public:
    /** In the order in which they are offered. */
    enum Preset { LastHour, Today, Yesterday, SevenDays, ThirtyDays, ThisMonth, All };

    /** The names, by `Preset`. */
    static QStringList names();

    /** Start and end. Days are the calendar's, whatever the clock does; `All` starts at `statisticsStart`. */
    static std::pair<QDateTime, QDateTime> range(int preset, const QDateTime& now,
                                                 const QDateTime& statisticsStart);
};
