// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDateTime>
#include <QObject>

#include "ui/charts/HistoryRangePickers.h"

class QListWidget;

/** What the page of the range says: the usual ranges, and two pickers that show the chosen one. Main thread. */
class HistoryRangePage : public QObject {
    Q_OBJECT

  public:
    /** The widgets outlive this object. Begins with all that the statistics have, up to now: asks the daemon for it. */
    HistoryRangePage(const HistoryRangePickers::Picker& start, const HistoryRangePickers::Picker& end,
                     QListWidget* presets);

    QDateTime startTime() const { return m_Pickers.startTime(); }
    QDateTime endTime() const { return m_Pickers.endTime(); }

    /** Moves a start before it. */
    void setEarliestTime(const QDateTime& time) { m_Pickers.setEarliestTime(time); }

    /** The page is shown: a usual range that is chosen ends now again. */
    void open();

    /** What is chosen stays, what is still being typed included. */
    void accept() { m_Pickers.finishEditing(); }

    /** Chooses what was chosen before the page was opened. */
    void restore();

  private:
    void startTimeChanged();
    void endTimeChanged();
    void presetSelected();
    void choosePreset(int preset);
    int selectedPreset() const;

    HistoryRangePickers m_Pickers;
    QListWidget* m_Presets;
    QDateTime m_StartBefore;
    QDateTime m_EndBefore;
    int m_PresetBefore = -1;  ///< none
};
