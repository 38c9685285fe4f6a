// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDateTimeEdit>
#include <optional>
#include <utility>

/**
 * A picker of a date and a time whose limits are in nobody's way: any date can be typed, and when that is finished it is
 * moved to the nearest limit. Until then the value is the one before. Main thread.
 */
class DateTimeEdit : public QDateTimeEdit {
    Q_OBJECT

  public:
    explicit DateTimeEdit(QWidget* parent = nullptr);

    /** Takes what was typed, as Return or leaving the picker does; nothing typed changes nothing. */
    void finishEditing();

    void stepBy(int steps) override;

  protected:
    void keyPressEvent(QKeyEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;

  private:
    QDateTime typedDateTime();

    /** What dates are limited to, set aside while somebody types. */
    std::optional<std::pair<QDateTime, QDateTime>> m_Limits;
};
