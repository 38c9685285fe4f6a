// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDateTimeEdit>
#include <optional>

/**
 * A picker of a date and a time whose limits are in nobody's way: any date can be typed, and when that is finished it is
 * moved to the nearest limit. Until then nothing is picked, though Qt takes what was typed as soon as somebody goes from
 * one part of the date to another. Main thread.
 */
class DateTimeEdit : public QDateTimeEdit {
    Q_OBJECT

  public:
    explicit DateTimeEdit(QWidget* parent = nullptr);

    /** Takes what was typed, as Return or leaving the picker does; nothing typed changes nothing. */
    void finishEditing();

    void stepBy(int steps) override;

  signals:
    /** The value is another one, and is within the limits. */
    void picked();

  protected:
    void keyPressEvent(QKeyEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;

  private:
    struct Before {
        QDateTime earliest;
        QDateTime latest;
        QDateTime value;
    };

    void valueChanged();
    QDateTime typedDateTime();

    std::optional<Before> m_Before;  ///< what somebody began to type, who is then not held up by limits
};
