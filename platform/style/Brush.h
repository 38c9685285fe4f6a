// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QPainter>
#include <QRectF>

/**
 * A painter for the length of a function: antialiased, without pen and brush, and put back as it was at the
 * end. Its lines lie on whole pixels of the screen at every scale.
 */
class Brush {
  public:
    /** Rounding of controls and of what lights up inside of them, in pixels. */
    static constexpr qreal radius = 5;

    explicit Brush(QPainter& painter);
    ~Brush();

    Brush(const Brush&) = delete;
    Brush& operator=(const Brush&) = delete;

    /** A filled rectangle; with `outline`, a line of `width` pixels just inside of its edge. */
    void panel(const QRectF& rect, const QColor& fill, const QColor& outline = Qt::transparent,
               qreal rounding = radius, qreal width = 1);

    void disc(const QRectF& rect, const QColor& fill, const QColor& outline = Qt::transparent);

    /** The ring that tells where the keyboard is. */
    void focusRing(const QRectF& rect, const QColor& color, qreal rounding = radius);

    /** An arrow head of two strokes, `size` pixels wide. */
    void chevron(const QPointF& center, Qt::ArrowType direction, const QColor& color, qreal size = 8);

    /** A check mark that fills `rect`. */
    void check(const QRectF& rect, const QColor& color);

    /** One pixel of the screen high. */
    void horizontalHairline(qreal left, qreal right, qreal y, const QColor& color);
    void verticalHairline(qreal x, qreal top, qreal bottom, const QColor& color);

  private:
    /** `rect` with its edges moved to the nearest pixels of the screen. */
    QRectF snapped(const QRectF& rect) const;

    /** `length`, in pixels, as a whole number of the screen's pixels, at least one. */
    qreal crisp(qreal length) const;

    QPainter& m_Painter;
};
