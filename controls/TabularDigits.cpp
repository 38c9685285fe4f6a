// SPDX-License-Identifier: GPL-3.0-or-later
#include "controls/TabularDigits.h"

#include <QPainter>
#include <algorithm>
#include <numeric>

TabularDigits::TabularDigits(const QFont& font) : m_Metrics(font) {
    for (char digit = '0'; digit <= '9'; ++digit) {
        m_DigitWidth = std::max(m_DigitWidth, m_Metrics.horizontalAdvance(QLatin1Char(digit)));
    }
}

qreal TabularDigits::width(const QString& number) const {
    return std::accumulate(number.begin(), number.end(), 0.0,
                           [this](qreal sum, QChar character) { return sum + roomFor(character); });
}

void TabularDigits::draw(QPainter& painter, const QRectF& rect, const QString& number) const {
    const QFontMetricsF metrics(painter.font());
    const qreal baseline = rect.center().y() + (metrics.ascent() - metrics.descent()) / 2;
    qreal left = rect.right() - width(number);
    for (const QChar character : number) {
        const qreal room = roomFor(character);
        const qreal inset = (room - metrics.horizontalAdvance(character)) / 2;
        painter.drawText(QPointF(left + inset, baseline), QString(character));
        left += room;
    }
}

qreal TabularDigits::roomFor(QChar character) const {
    return character.isDigit() ? m_DigitWidth : m_Metrics.horizontalAdvance(character);
}
