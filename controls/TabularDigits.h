// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QFontMetricsF>
#include <QRectF>
#include <QString>

class QPainter;

/**
 * Draws numbers so that the same places of several rows stand below each other: every digit takes as much
 * room as the widest one of a font. Good interface fonts have digits of different widths, and this Qt cannot
 * ask them for the others. Main thread.
 */
class TabularDigits {
  public:
    /** The digits' room is taken from `font`; what is drawn may be a heavier face of the same size. */
    explicit TabularDigits(const QFont& font);

    qreal width(const QString& number) const;

    /** With the painter's font and pen, at the right of `rect` and centred in its height. */
    void draw(QPainter& painter, const QRectF& rect, const QString& number) const;

  private:
    qreal roomFor(QChar character) const;

    QFontMetricsF m_Metrics;
    qreal m_DigitWidth = 0;
};
