// SPDX-License-Identifier: GPL-3.0-or-later
#include "controls/Calendar.h"

#include <QEvent>
#include <QPainter>
#include <QTextCharFormat>

Calendar::Calendar(QWidget* parent) : QCalendarWidget(parent) {
    calm();
}

void Calendar::paintCell(QPainter* painter, const QRect& rect, QDate date) const {
    if (date >= minimumDate() && date <= maximumDate()) {
        QCalendarWidget::paintCell(painter, rect, date);
        return;
    }
    painter->save();
    painter->fillRect(rect, palette().color(QPalette::Window));
    painter->setPen(palette().color(QPalette::Disabled, QPalette::Text));
    painter->drawText(rect, Qt::AlignCenter, locale().toString(date.day()));
    painter->restore();
}

void Calendar::changeEvent(QEvent* event) {
    QCalendarWidget::changeEvent(event);
    if (event->type() == QEvent::PaletteChange) {
        calm();
    }
}

/** No bar in the accent's colour above the days, and no red: that is a line of the charts. */
void Calendar::calm() {
    if (auto* bar = findChild<QWidget*>("qt_calendar_navigationbar")) {
        QPalette quiet = palette();
        quiet.setColor(QPalette::Highlight, palette().color(QPalette::Button));
        quiet.setColor(QPalette::HighlightedText, palette().color(QPalette::ButtonText));
        bar->setPalette(quiet);
    }
    QTextCharFormat text;
    text.setForeground(palette().text());
    for (const Qt::DayOfWeek day : {Qt::Saturday, Qt::Sunday}) {
        setWeekdayTextFormat(day, text);
    }
}
