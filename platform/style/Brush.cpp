// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/style/Brush.h"

#include <QPolygonF>
#include <algorithm>
#include <cmath>

namespace {

constexpr qreal focusWidth = 2;
constexpr qreal discWidth = 1.5;  // a curve of one pixel would look fainter than a straight line

QPen stroke(const QColor& color, qreal width) {
    return {color, width, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin};
}

qreal degreesFromDown(Qt::ArrowType direction) {
    switch (direction) {
        case Qt::LeftArrow:
            return 90;
        case Qt::UpArrow:
            return 180;
        case Qt::RightArrow:
            return 270;
        default:
            return 0;
    }
}

}  // namespace

Brush::Brush(QPainter& painter) : m_Painter(painter) {
    m_Painter.save();
    m_Painter.setRenderHint(QPainter::Antialiasing);
    m_Painter.setPen(Qt::NoPen);
    m_Painter.setBrush(Qt::NoBrush);
}

Brush::~Brush() {
    m_Painter.restore();
}

void Brush::panel(const QRectF& rect, const QColor& fill, const QColor& outline, qreal rounding,
                  qreal width) {
    const bool hasLine = outline.alpha() > 0;
    const qreal line = hasLine ? crisp(width) : 0;
    const qreal inset = line / 2;
    m_Painter.setPen(hasLine ? QPen(outline, line) : QPen(Qt::NoPen));
    m_Painter.setBrush(fill);
    m_Painter.drawRoundedRect(snapped(rect).adjusted(inset, inset, -inset, -inset), rounding - inset,
                              rounding - inset);
}

void Brush::disc(const QRectF& rect, const QColor& fill, const QColor& outline) {
    m_Painter.setPen(outline.alpha() > 0 ? QPen(outline, discWidth) : QPen(Qt::NoPen));
    m_Painter.setBrush(fill);
    const qreal inset = outline.alpha() > 0 ? discWidth / 2 : 0;
    m_Painter.drawEllipse(rect.adjusted(inset, inset, -inset, -inset));
}

void Brush::focusRing(const QRectF& rect, const QColor& color, qreal rounding) {
    panel(rect, Qt::transparent, color, rounding, focusWidth);
}

void Brush::chevron(const QPointF& center, Qt::ArrowType direction, const QColor& color, qreal size) {
    const qreal half = size / 2;
    QTransform turn;
    turn.rotate(degreesFromDown(direction));
    const QPolygonF head({QPointF(-half, -half / 2), QPointF(0, half / 2), QPointF(half, -half / 2)});
    m_Painter.setPen(stroke(color, 1.5));
    m_Painter.setBrush(Qt::NoBrush);
    m_Painter.drawPolyline(turn.map(head).translated(center));
}

void Brush::check(const QRectF& rect, const QColor& color) {
    const auto at = [&rect](qreal x, qreal y) {
        return rect.topLeft() + QPointF(rect.width() * x, rect.height() * y);
    };
    m_Painter.setPen(stroke(color, std::max(1.5, rect.width() / 8)));
    m_Painter.setBrush(Qt::NoBrush);
    m_Painter.drawPolyline(QPolygonF({at(0.22, 0.52), at(0.42, 0.72), at(0.78, 0.3)}));
}

void Brush::horizontalHairline(qreal left, qreal right, qreal y, const QColor& color) {
    const QRectF line = snapped(QRectF(left, y, right - left, 1));
    m_Painter.fillRect(QRectF(line.left(), line.top(), line.width(), crisp(1)), color);
}

void Brush::verticalHairline(qreal x, qreal top, qreal bottom, const QColor& color) {
    const QRectF line = snapped(QRectF(x, top, 1, bottom - top));
    m_Painter.fillRect(QRectF(line.left(), line.top(), crisp(1), line.height()), color);
}

QRectF Brush::snapped(const QRectF& rect) const {
    const QTransform& toScreen = m_Painter.deviceTransform();
    if (toScreen.type() > QTransform::TxScale) {
        return rect;
    }
    const QRectF onScreen = toScreen.mapRect(rect);
    const QPointF corner(std::round(onScreen.left()), std::round(onScreen.top()));
    const QPointF opposite(std::round(onScreen.right()), std::round(onScreen.bottom()));
    return toScreen.inverted().mapRect(QRectF(corner, opposite));
}

qreal Brush::crisp(qreal length) const {
    const qreal scale = std::abs(m_Painter.deviceTransform().m11());
    return scale > 0 ? std::max(1.0, std::floor(length * scale)) / scale : length;
}
