// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QBasicTimer>
#include <QElapsedTimer>
#include <QObject>
#include <QPointer>
#include <QWidget>
#include <vector>

/** Keeps indeterminate progress bars moving as long as they are painted. Main thread. */
class BusyBars : public QObject {
  public:
    BusyBars();

    /** To be called whenever `bar` is painted: has it painted again soon. */
    void keepMoving(QWidget* bar);

    /** How far all of them are in their turn, 0 to 1. */
    qreal phase() const;

  protected:
    void timerEvent(QTimerEvent* event) override;

  private:
    std::vector<QPointer<QWidget>> m_Bars;  ///< painted since the last tick
    QBasicTimer m_Timer;
    QElapsedTimer m_Clock;
};
