// SPDX-License-Identifier: GPL-3.0-or-later
#include "controls/chart/GraphicReadOut.h"

#include <QPainter>
#include <algorithm>
#include <cmath>

#include "controls/chart/GraphicPainter.h"
#include "controls/chart/GraphicView.h"
#include "controls/chart/GraphicViewDelegate.h"

namespace {

// All in pixels.
constexpr qreal padding = 8;
constexpr qreal columnGap = 12;
constexpr qreal swatchRoom = 16;
constexpr qreal distance = 12;  // of the card from the hairline
constexpr qreal cornerRadius = 4;
constexpr qreal markRadius = 3.5;

}  // namespace

GraphicReadOut::GraphicReadOut(GraphicView* view) : QWidget(view), m_View(*view) {
    setAttribute(Qt::WA_TransparentForMouseEvents);
    hide();
}

void GraphicReadOut::pointAt(const QPointF& position) {
    m_Pointer = position;
    const bool isInside = m_Layout.area().contains(position) && !m_Layout.isEmpty();
    readAt(isInside ? nearestX(m_Layout.valueX(position.x())) : std::nullopt);
}

void GraphicReadOut::dismiss() {
    m_Pointer.reset();
    readAt(std::nullopt);
}

void GraphicReadOut::readAt(std::optional<float> x) {
    if (m_X != x || m_Pointer) {
        m_X = x;
        setVisible(m_X.has_value());
        raise();
        update();
    }
}

void GraphicReadOut::follow(const GraphicLayout& layout) {
    m_Layout = layout;
    if (m_Pointer) {
        pointAt(*m_Pointer);
    } else if (m_X) {
        readAt(nearestX(*m_X));
        update();
    }
}

/** Of all lines' visible points. */
std::optional<float> GraphicReadOut::nearestX(double x) const {
    const QRectF& viewport = m_Layout.viewport();
    std::optional<float> best;
    for (const auto& line : m_View.scene().lines) {
        const auto* point = line.data.nearest(x);
        if (point != nullptr && point->x >= viewport.left() && point->x <= viewport.right() &&
            (!best || std::abs(point->x - x) < std::abs(*best - x))) {
            best = point->x;
        }
    }
    return best;
}

void GraphicReadOut::step(int direction) {
    const QRectF& viewport = m_Layout.viewport();
    std::optional<float> next;
    for (const auto& line : m_View.scene().lines) {
        const auto [first, last] = line.data.within(viewport.left(), viewport.right());
        for (std::size_t i = first; i < last; ++i) {
            const float x = line.data.points()[i].x;
            const bool isOnTheWay = !m_X || (direction < 0 ? x < *m_X : x > *m_X);
            const bool isNearer = !next || (direction < 0 || !m_X ? x > *next : x < *next);
            next = isOnTheWay && isNearer ? x : next;
        }
    }
    m_Pointer.reset();
    readAt(next ? next : m_X);
}

std::vector<GraphicReadOut::Row> GraphicReadOut::rows() const {
    std::vector<Row> result;
    const GraphicScene& scene = m_View.scene();
    for (unsigned i = 0; i < scene.lines.size(); ++i) {
        const auto* point = scene.lines[i].data.nearest(*m_X);
        if (point == nullptr || point->x != *m_X) {
            continue;
        }
        const QString value =
            scene.delegate != nullptr ? scene.delegate->readOutValueToString(point->y, 1) : QString();
        result.push_back(
            {i, QPointF(m_Layout.pixelX(point->x), m_Layout.pixelY(point->y)), m_View.lineName(i), value});
    }
    return result;
}

void GraphicReadOut::paintEvent(QPaintEvent* /*event*/) {
    if (!m_X || m_Layout.isEmpty()) {
        return;
    }
    QPainter painter(this);
    const GraphicColors colors(palette());
    const qreal x = std::round(m_Layout.pixelX(*m_X));
    painter.setPen(QPen(colors.axis, 1));
    painter.drawLine(QPointF(x, m_Layout.area().top()), QPointF(x, m_Layout.area().bottom()));
    painter.setRenderHint(QPainter::Antialiasing);
    const std::vector<Row> shown = rows();
    for (const Row& row : shown) {
        if (m_Layout.area().adjusted(-1, -1, 1, 1).contains(row.position)) {
            QColor color = m_View.lineColor(row.line);
            color.setAlpha(255);
            painter.setPen(QPen(colors.background, 1.5));
            painter.setBrush(color);
            GraphicPainter::drawMark(painter, row.position, markRadius, row.line);
        }
    }
    GraphicViewDelegate* delegate = m_View.scene().delegate;
    const QString title = delegate != nullptr ? delegate->readOutValueToString(*m_X, 0).trimmed() : QString();
    drawCard(painter, title, shown);
}

/** Beside the hairline, on the side that has more room, and within the view. */
QRectF GraphicReadOut::cardRect(const QString& title, const std::vector<Row>& rows) const {
    const QFontMetricsF metrics(m_Layout.font());
    qreal width = metrics.horizontalAdvance(title);
    for (const Row& row : rows) {
        width = std::max(width, swatchRoom + metrics.horizontalAdvance(row.name) + columnGap +
                                    metrics.horizontalAdvance(row.value));
    }
    const auto lines = static_cast<qreal>(rows.size()) + (title.isEmpty() ? 0 : 1);
    const QSizeF size(std::min(std::ceil(width) + 2 * padding, this->width() - 2.0),
                      lines * metrics.lineSpacing() + 2 * padding);
    const qreal x = m_Layout.pixelX(*m_X);
    const bool isRight = x + distance + size.width() < this->width() || x < this->width() / 2.0;
    const qreal y = (m_Pointer ? m_Pointer->y() : m_Layout.area().center().y()) - size.height() / 2;
    const QPointF corner(isRight ? x + distance : x - distance - size.width(), y);
    return {QPointF(std::clamp(corner.x(), 1.0, std::max(1.0, this->width() - size.width() - 1)),
                    std::clamp(corner.y(), 1.0, std::max(1.0, height() - size.height() - 1)))
                .toPoint(),
            size};
}

void GraphicReadOut::drawCard(QPainter& painter, const QString& title, const std::vector<Row>& rows) const {
    const GraphicColors colors(palette());
    const QRectF card = cardRect(title, rows);
    painter.setPen(QPen(colors.axis, 1));
    painter.setBrush(palette().color(QPalette::Window));
    painter.drawRoundedRect(card.adjusted(0.5, 0.5, -0.5, -0.5), cornerRadius, cornerRadius);
    painter.setFont(m_Layout.font());
    const QFontMetricsF metrics(m_Layout.font());
    QRectF line(card.left() + padding, card.top() + padding, card.width() - 2 * padding,
                metrics.lineSpacing());
    if (!title.isEmpty()) {
        painter.setPen(colors.text);
        painter.drawText(line, Qt::AlignLeft | Qt::AlignVCenter,
                         metrics.elidedText(title, Qt::ElideRight, line.width()));
        line.translate(0, metrics.lineSpacing());
    }
    for (const Row& row : rows) {
        QColor color = m_View.lineColor(row.line);
        color.setAlpha(255);
        painter.setPen(Qt::NoPen);
        painter.setBrush(color);
        GraphicPainter::drawMark(painter, QPointF(line.left() + markRadius + 1, line.center().y()),
                                 markRadius, row.line);
        painter.setPen(palette().color(QPalette::Text));
        painter.drawText(line.adjusted(swatchRoom, 0, 0, 0), Qt::AlignLeft | Qt::AlignVCenter, row.name);
        painter.drawText(line, Qt::AlignRight | Qt::AlignVCenter, row.value);
        line.translate(0, metrics.lineSpacing());
    }
}
