// SPDX-License-Identifier: GPL-3.0-or-later
#include "controls/DateTimeEdit.h"

#include <QKeyEvent>
#include <QLineEdit>
#include <algorithm>

DateTimeEdit::DateTimeEdit(QWidget* parent) : QDateTimeEdit(parent) {
    setKeyboardTracking(false);
    connect(this, &QDateTimeEdit::dateTimeChanged, this, &DateTimeEdit::valueChanged);
}

void DateTimeEdit::valueChanged() {
    if (!m_Before) {
        emit picked();
    }
}

void DateTimeEdit::finishEditing() {
    if (!m_Before) {
        return;
    }
    const QDateTime typed = typedDateTime();
    const auto [earliest, latest, value] = *m_Before;
    setDateTimeRange(earliest, latest);
    setDateTime(value);
    m_Before.reset();
    if (typed.isValid()) {
        setDateTime(std::clamp(typed, earliest, latest));
    }
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
    if (isTyping && !m_Before) {
        m_Before = Before{minimumDateTime(), maximumDateTime(), dateTime()};
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
