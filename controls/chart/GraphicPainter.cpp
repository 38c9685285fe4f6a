// SPDX-License-Identifier: GPL-3.0-or-later
#include "controls/chart/GraphicPainter.h"

#include <QFontMetricsF>
#include <QPainter>
#include <algorithm>
#include <cmath>

namespace {

constexpr qreal lineWidth = 1.5;         // pixels
constexpr QPointF shadowOffset(1, 1.5);  // pixels
constexpr qreal leastSelection = 3;      // pixels that a selected stretch is wide at least
constexpr qreal markRadius = 3;          // pixels
constexpr qreal fillOpacity = 0.12;      // of the line's own
constexpr qreal tickLength = 3;          // pixels
constexpr int filledStyle = 1;

QColor withAlpha(QColor color, int alpha) {
    color.setAlpha(alpha);
    return color;
}

/** Keeps coordinates that the raster engine can work with, whatever the viewport is. */
qreal bounded(qreal pixel) {
    return std::clamp(pixel, -20000.0, 20000.0);
}

}  // namespace

GraphicPainter::GraphicPainter(const GraphicScene& scene, const GraphicLayout& layout,
                               const GraphicColors& colors)
    : m_Scene(scene), m_Layout(layout), m_Colors(colors) {}

void GraphicPainter::drawSelection(QPainter& painter) const {
    if (!m_Scene.selection || m_Layout.isEmpty()) {
        return;
    }
    const auto& selection = *m_Scene.selection;
    const QRectF& area = m_Layout.area();
    const bool isX = selection.axe == 0;
    qreal from = bounded(isX ? m_Layout.pixelX(selection.from) : m_Layout.pixelY(selection.to));
    qreal to = bounded(isX ? m_Layout.pixelX(selection.to) : m_Layout.pixelY(selection.from));
    const qreal missing = selection.isPoint ? 0 : std::max(0.0, leastSelection - (to - from));
    from = std::floor(from - missing / 2);  // whole pixels: an edge between two would be a smear
    to = std::floor(to + missing / 2);
    const auto across = [&](qreal begin, qreal end) {
        return isX ? QRectF(QPointF(begin, area.top()), QPointF(end, area.bottom()))
                   : QRectF(QPointF(area.left(), begin), QPointF(area.right(), end));
    };
    painter.save();
    painter.setClipRect(area.adjusted(-1, 0, 1, 1));
    const QColor edge = withAlpha(m_Colors.selection, 150);
    if (!selection.isPoint) {
        painter.fillRect(across(from, to), withAlpha(m_Colors.selection, 56));
        painter.fillRect(across(to, to + 1), edge);
    }
    painter.fillRect(across(from, from + 1), edge);
    painter.restore();
}

void GraphicPainter::drawFills(QPainter& painter) const {
    if (m_Layout.isEmpty()) {
        return;
    }
    painter.save();
    painter.setClipRect(m_Layout.area());
    painter.setRenderHint(QPainter::Antialiasing, false);
    painter.setPen(Qt::NoPen);
    const qreal zero = bounded(m_Layout.pixelY(0));
    for (const GraphicScene::Line& line : m_Scene.lines) {
        QPolygonF points = line.style == filledStyle ? polyline(line.data) : QPolygonF();
        if (!points.isEmpty() && points.size() <= m_Layout.area().width()) {  // a denser line fills by itself
            points << QPointF(points.last().x(), zero) << QPointF(points.first().x(), zero);
            QColor faint = line.color;
            faint.setAlphaF(static_cast<float>(faint.alphaF() * fillOpacity));
            painter.setBrush(m_Colors.onBackground(faint));
            painter.drawPolygon(points);
        }
    }
    painter.restore();
}

void GraphicPainter::drawLines(QPainter& painter) const {
    if (m_Layout.isEmpty()) {
        return;
    }
    painter.save();
    painter.setClipRect(m_Layout.area().adjusted(-1, -1, 1, 1));
    painter.setRenderHint(QPainter::Antialiasing);
    for (const GraphicScene::Line& line : m_Scene.lines) {
        const QPolygonF points = polyline(line.data);
        if (line.hasDropShadow) {
            drawSegments(painter, points, shadowOffset, m_Colors.onBackground(m_Colors.shadow));
        }
        drawSegments(painter, points, {}, m_Colors.onBackground(line.color));
    }
    painter.restore();
}

void GraphicPainter::drawSegments(QPainter& painter, const QPolygonF& points, const QPointF& offset,
                                  const QColor& color) const {
    QList<QLineF> segments;
    segments.reserve(points.size());
    for (qsizetype i = 1; i < points.size(); ++i) {
        segments.append(QLineF(points[i - 1] + offset, points[i] + offset));
    }
    painter.setPen(QPen(color, lineWidth, Qt::SolidLine, Qt::SquareCap));
    painter.drawLines(segments);
}

/**
 * At most four points for every column of pixels: first, lowest, highest and last, which looks the same as all of them.
 */
QPolygonF GraphicPainter::polyline(const GraphicLine& line) const {
    const QRectF& viewport = m_Layout.viewport();
    const auto [first, last] = line.drawn(viewport.left(), viewport.right());
    const auto pixel = [&](std::size_t index) {
        const auto& point = line.points()[index];
        return QPointF(bounded(m_Layout.pixelX(point.x)), bounded(m_Layout.pixelY(point.y)));
    };
    QPolygonF result;
    for (std::size_t i = first; i < last;) {
        const QPointF begin = pixel(i);
        const qreal column = std::floor(begin.x());
        QPointF low = begin;
        QPointF high = begin;
        QPointF end = begin;
        const std::size_t start = i;
        for (++i; i < last; ++i) {
            const QPointF next = pixel(i);
            if (std::floor(next.x()) != column) {
                break;
            }
            low = next.y() > low.y() ? next : low;
            high = next.y() < high.y() ? next : high;
            end = next;
        }
        result << begin;
        if (i - start > 2) {
            result << low << high;
        }
        if (i - start > 1) {
            result << end;
        }
    }
    return result;
}

void GraphicPainter::drawMarks(QPainter& painter) const {
    const auto& selection = m_Scene.selection;
    if (!selection || !selection->isPoint || selection->axe != 0 || m_Layout.isEmpty()) {
        return;
    }
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    for (unsigned i = 0; i < m_Scene.lines.size(); ++i) {
        const GraphicScene::Line& line = m_Scene.lines[i];
        const auto* point = line.data.nearest(selection->from);
        if (point == nullptr || point->x != static_cast<float>(selection->from)) {
            continue;
        }
        const QPointF center(m_Layout.pixelX(point->x), m_Layout.pixelY(point->y));
        if (m_Layout.area().adjusted(-1, -1, 1, 1).contains(center)) {
            painter.setPen(QPen(m_Colors.background, 1));
            painter.setBrush(withAlpha(line.color, 255));
            drawMark(painter, center, markRadius, i);
        }
    }
    painter.restore();
}

void GraphicPainter::drawMark(QPainter& painter, const QPointF& center, qreal radius, unsigned line) {
    const QRectF square(center.x() - radius, center.y() - radius, 2 * radius, 2 * radius);
    const QPointF across(radius * 1.2, 0);
    const QPointF up(0, radius * 1.2);
    switch (line % 3) {
        case 0:
            painter.drawEllipse(square);
            break;
        case 1:
            painter.drawRect(square);
            break;
        default:
            painter.drawPolygon(QPolygonF{center - across, center - up, center + across, center + up});
    }
}

void GraphicPainter::drawLabels(QPainter& painter) const {
    painter.save();
    painter.setFont(m_Layout.font());
    painter.setPen(m_Colors.text);
    for (const auto& label : m_Layout.xLabels()) {
        painter.drawText(label.rect, Qt::AlignHCenter | Qt::AlignTop | Qt::TextDontClip, label.text);
    }
    const qreal right = m_Layout.area().left() - 6;
    for (const auto& label : m_Layout.yLabels()) {
        const qreal y = std::floor(m_Layout.pixelY(label.value));
        painter.fillRect(QRectF(m_Layout.area().left() - tickLength, y, tickLength, 1), m_Colors.axis);
        painter.drawText(label.rect.translated(right, 0),
                         Qt::AlignRight | Qt::AlignVCenter | Qt::TextDontClip, label.text);
    }
    drawCaptions(painter);
    painter.restore();
}

void GraphicPainter::drawCaptions(QPainter& painter) const {
    const QFontMetricsF metrics(m_Layout.font());
    const auto& [x, y] = m_Scene.descriptions;
    if (!m_Layout.xCaption().isEmpty()) {
        painter.drawText(m_Layout.xCaption(), Qt::AlignCenter,
                         metrics.elidedText(x, Qt::ElideRight, m_Layout.xCaption().width()));
    }
    const QRectF& upright = m_Layout.yCaption();
    if (!upright.isEmpty()) {
        painter.translate(upright.left(), upright.bottom());
        painter.rotate(-90);
        painter.drawText(QRectF(0, 0, upright.height(), upright.width()), Qt::AlignCenter,
                         metrics.elidedText(y, Qt::ElideRight, upright.height()));
    }
}
