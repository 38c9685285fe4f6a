// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDateTime>
#include <QObject>

class Calendar;
class DateTimeEdit;

/**
 * The two ends of a range, each a picker with a calendar, that keep each other in their limits: the start is not
 * after the end and not before the earliest date, the end not before the start. Main thread.
 */
class HistoryRangePickers : public QObject {
    Q_OBJECT

  public:
    struct Picker {
        DateTimeEdit* edit;
        Calendar* calendar;
    };

    /** The widgets outlive this object. */
    HistoryRangePickers(const Picker& start, const Picker& end);

    /** What the pickers say, in full seconds: of an hour that occurs twice the first, a skipped one moved forward. */
    QDateTime startTime() const;
    QDateTime endTime() const;

    /** Moves what is beyond the limits. An invalid date leaves its picker as it is. Emits nothing. */
    void setRange(const QDateTime& startTime, const QDateTime& endTime);

    /** Moves a start before it. Emits nothing. */
    void setEarliestTime(const QDateTime& time);

    /** Takes what was typed and not yet finished; may emit both signals. */
    void finishEditing();

    void limitEndTime();    ///< to what is not before the start
    void limitStartTime();  ///< to what is not after the end

  signals:
    /** The user changed them. The limits of the other picker are up to its owner. */
    void startTimeChanged();
    void endTimeChanged();

  private:
    void setup(const Picker& picker);
    void showInCalendars();

    const Picker m_Start;
    const Picker m_End;
    QDateTime m_EarliestTime;
};
