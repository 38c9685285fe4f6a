// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QCalendarWidget>

/** A calendar without a loud bar and without red, in which days that cannot be chosen look so. Main thread. */
class Calendar : public QCalendarWidget {
    Q_OBJECT

  public:
    explicit Calendar(QWidget* parent = nullptr);

  protected:
    void paintCell(QPainter* painter, const QRect& rect, QDate date) const override;
    void changeEvent(QEvent* event) override;

  private:
    void calm();
};
