// SPDX-License-Identifier: GPL-3.0-or-later
#include "controls/DateTimeEdit.h"

#include <QKeyEvent>
#include <QLineEdit>
#include <algorithm>

DateTimeEdit::DateTimeEdit(QWidget* parent) : QDateTimeEdit(parent) {
    setKeyboardTracking(false);
}

/** The value has stayed within the limits all the time, so that to set them again does not move it. */
void DateTimeEdit::finishEditing() {
    if (!m_Limits) {
        return;
    }
    const QDateTime typed = typedDateTime();
    const auto [earliest, latest] = *m_Limits;
    m_Limits.reset();
    setDateTimeRange(earliest, latest);
    setDateTime(typed.isValid() ? std::clamp(typed, earliest, latest) : dateTime());
}

/** Invalid for a text that cannot be mended. */
QDateTime DateTimeEdit::typedDateTime() {
    QString text = lineEdit()->text();
    int position = 0;
    if (validate(text, position) != QValidator::Acceptable) {
        fixup(text);
    }
    return validate(text, position) == QValidator::Acceptable ? dateTimeFromText(text) : QDateTime();
}

void DateTimeEdit::stepBy(int steps) {
    finishEditing();
    QDateTimeEdit::stepBy(steps);
}

void DateTimeEdit::keyPressEvent(QKeyEvent* event) {
    const bool isEnd = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
    const bool isTyping = !event->text().isEmpty() && !isEnd;
    if (isTyping && !m_Limits) {
        m_Limits.emplace(minimumDateTime(), maximumDateTime());
        clearMinimumDateTime();
        clearMaximumDateTime();
    } else if (isEnd) {
        finishEditing();
    }
    QDateTimeEdit::keyPressEvent(event);
}

void DateTimeEdit::focusOutEvent(QFocusEvent* event) {
    finishEditing();
    QDateTimeEdit::focusOutEvent(event);
}
