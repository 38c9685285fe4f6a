// SPDX-License-Identifier: GPL-3.0-or-later
#include "controls/chart/GraphicViewLegend.h"

#include <QEvent>
#include <QMouseEvent>
#include <QPainter>
#include <algorithm>
#include <utility>

#include "controls/chart/GraphicSkyline.h"
#include "controls/chart/GraphicView.h"
#include "controls/chart/GraphicViewLegendItem.h"
#include "controls/chart/GraphicViewLineColorLegendItem.h"

namespace {

// All in pixels.
constexpr int padding = 8;
constexpr int itemGap = 2;
constexpr int shadowExtent = 5;  // on each side of the box
constexpr int shadowDrop = 1;    // that it lies lower
constexpr qreal cornerRadius = 4;
constexpr int leastWidth = 40;
constexpr int leastHuggedWidth = 160;  // that a box may have if its items want it, in a smaller frame, too

constexpr int slideStep = 8;
constexpr int clearance = 4;  // around a box that covers no line

constexpr double mostOfView = 0.12;  // that a legend may cover
constexpr double mostOfHeight = 0.3;
constexpr double mostOfHeightForTitle = 0.18;  // which says nothing that the window's own does not

/** A margin before, a size and a margin after, of which those that are flexible share what was gained or lost. */
std::pair<qreal, qreal> resized(qreal start, qreal size, qreal gained, bool isStartFlexible,
                                bool isSizeFlexible, bool isEndFlexible) {
    const int flexible = int{isStartFlexible} + int{isSizeFlexible} + int{isEndFlexible};
    const qreal share = flexible > 0 ? gained / flexible : 0;
    return {start + (isStartFlexible ? share : 0), std::max(0.0, size + (isSizeFlexible ? share : 0))};
}

}  // namespace

GraphicViewLegend* GraphicViewLegend::legendWithGraphic(GraphicView* view, const QRectF& frame) {
    auto* legend = new GraphicViewLegend(view);
    new GraphicViewLegendItem(legend);
    legend->setFrame(frame, false);
    return legend;
}

GraphicViewLegend::GraphicViewLegend(GraphicView* view) : QWidget(view), m_Graphic(view) {}

QList<GraphicViewLegendItem*> GraphicViewLegend::items() const {
    return findChildren<GraphicViewLegendItem*>(Qt::FindDirectChildrenOnly);
}

void GraphicViewLegend::setAutoresizingMask(int mask) {
    setFrame(frame(), false);
    m_Mask = mask;
    m_Graphic->placeLegends();
}

void GraphicViewLegend::setDropShadow(bool dropShadow) {
    m_HasDropShadow = dropShadow;
    update();
}

QRectF GraphicViewLegend::frame() const {
    const QSizeF gained = QSizeF(m_Graphic->size()) - m_ViewSize;
    const auto has = [this](Autoresizing part) { return (m_Mask & part) != 0; };
    const auto [x, width] = resized(m_Frame.x(), m_Frame.width(), gained.width(), has(MinXMargin),
                                    has(WidthSizable), has(MaxXMargin));
    const auto [y, height] = resized(m_Frame.y(), m_Frame.height(), gained.height(), has(MinYMargin),
                                     has(HeightSizable), has(MaxYMargin));
    return {x, y, width, height};
}

void GraphicViewLegend::setFrame(const QRectF& frame, bool needRepaint) {
    m_Frame = frame;
    m_ViewSize = m_Graphic->size();
    m_Shift = 0;
    m_Graphic->placeLegends();
    if (needRepaint) {
        repaint();
    }
}

void GraphicViewLegend::fitToItems() {
    setFrame(QRectF(frame().topLeft(), itemsSize()), false);
}

QString GraphicViewLegend::nameOfLine(unsigned line) const {
    for (const auto* item : findChildren<GraphicViewLineColorLegendItem*>(Qt::FindDirectChildrenOnly)) {
        if (item->bindedGraphicLine() == line) {
            return item->text();
        }
    }
    return {};
}

QSize GraphicViewLegend::itemsSize() const {
    QSize size(0, -itemGap);
    for (const GraphicViewLegendItem* item : items()) {
        const QSize wanted = item->sizeHint();
        if (!wanted.isEmpty()) {
            size = QSize(std::max(size.width(), wanted.width()), size.height() + wanted.height() + itemGap);
        }
    }
    return size.expandedTo({0, 0}) + QSize(2 * padding, 2 * padding);
}

void GraphicViewLegend::place() {
    const QRectF wanted = frame();
    const QSizeF view = m_Graphic->size();
    const qreal height = std::min(wanted.height(), view.height());
    const qreal y = std::clamp(view.height() - wanted.y() - wanted.height(), 0.0, view.height() - height);
    const auto [left, right] = stretchFor(y, height);
    const qreal hugged =
        std::min<qreal>(itemsSize().width(), std::max<qreal>(wanted.width(), leastHuggedWidth));
    const qreal width = std::min(isHugging() ? hugged : wanted.width(), right - left);
    const qreal x =
        std::clamp(wanted.center().x() + m_Shift - width / 2, left, std::max(left, right - width));
    m_Box = QRectF(x, y, width, height).toRect();
    setGeometry(m_Box.adjusted(-shadowExtent, -shadowExtent, shadowExtent, shadowExtent + shadowDrop));
    const bool isCut = wanted.height() > view.height() || width < std::min<qreal>(leastWidth, hugged);
    setVisible(!isCut && width * height <= mostOfView * view.width() * view.height() &&
               height <= (isHugging() ? mostOfHeightForTitle : mostOfHeight) * view.height());
    placeItems();
    update();
}

void GraphicViewLegend::keepClearOf(const GraphicSkyline& skyline) {
    if (m_IsPlacedByUser) {
        return;
    }
    m_Shift = 0;
    place();
    for (int shift = 0; !isHidden() && shift < m_Graphic->width(); shift += slideStep) {
        for (const int side : {-1, 1}) {
            if (isFree(m_Box.translated(side * shift, 0), skyline)) {
                m_Shift = side * shift;
                place();
                return;
            }
        }
    }
}

bool GraphicViewLegend::isFree(const QRectF& box, const GraphicSkyline& skyline) const {
    const QRectF around = box.adjusted(-clearance, -clearance, clearance, clearance);
    const auto legends = m_Graphic->legends();
    return around.left() >= skyline.area().left() && around.right() <= skyline.area().right() &&
           skyline.topBetween(around.left(), around.right()) >= around.bottom() &&
           std::none_of(legends.begin(), legends.end(), [&](const GraphicViewLegend* other) {
               const bool makesRoom = other->isHugging() && !isHugging();
               return other != this && !makesRoom && !other->isHidden() &&
                      other->m_Box.intersects(around.toAlignedRect());
           });
}

/** From where to where it may be in X. One that hugs its items keeps away from the others. */
std::pair<qreal, qreal> GraphicViewLegend::stretchFor(qreal y, qreal height) const {
    qreal left = 0;
    qreal right = m_Graphic->width();
    for (const GraphicViewLegend* other : m_Graphic->legends()) {
        const bool isInTheWay = isHugging() && !other->isHugging() && !other->isHidden() &&
                                other->m_Box.top() < y + height && other->m_Box.bottom() >= y;
        if (isInTheWay && other->m_Box.center().x() >= frame().center().x()) {
            right = std::min<qreal>(right, other->m_Box.left() - padding);
        } else if (isInTheWay) {
            left = std::max<qreal>(left, other->m_Box.right() + padding);
        }
    }
    return {left, right};
}

void GraphicViewLegend::placeItems() {
    int y = shadowExtent + padding;
    for (GraphicViewLegendItem* item : items()) {
        const QSize wanted = item->sizeHint();
        item->setGeometry(shadowExtent + padding, y, std::max(0, m_Box.width() - 2 * padding),
                          wanted.height());
        y += wanted.isEmpty() ? 0 : wanted.height() + itemGap;
    }
}

void GraphicViewLegend::drawOn(QPainter& painter) const {
    if (isHidden()) {
        return;
    }
    painter.save();
    painter.translate(pos());
    drawBox(painter);
    for (const GraphicViewLegendItem* item : items()) {
        painter.save();
        painter.translate(item->pos());
        item->draw(painter);
        painter.restore();
    }
    painter.restore();
}

void GraphicViewLegend::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    drawBox(painter);
}

/** The shadow is a few faint boxes around each other: a blur would cost more than the rest of the chart. */
void GraphicViewLegend::drawBox(QPainter& painter) const {
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    const QRectF box(QPointF(shadowExtent, shadowExtent), QSizeF(m_Box.size()));
    if (m_HasDropShadow) {
        painter.setBrush(QColor(0, 0, 0, 8));
        for (int i = 1; i <= shadowExtent; ++i) {
            painter.drawRoundedRect(box.adjusted(-i, -i, i, i).translated(0, shadowDrop), cornerRadius + i,
                                    cornerRadius + i);
        }
    }
    QColor fill = palette().color(QPalette::Window);
    fill.setAlpha(235);
    QColor edge = palette().color(QPalette::Text);
    edge.setAlpha(36);
    painter.setBrush(fill);
    painter.setPen(QPen(edge, 1));
    painter.drawRoundedRect(box.adjusted(0.5, 0.5, -0.5, -0.5), cornerRadius, cornerRadius);
}

void GraphicViewLegend::mousePressEvent(QMouseEvent* event) {
    if (!m_IsMovable || event->button() != Qt::LeftButton) {
        event->ignore();
        return;
    }
    m_IsDragging = true;
    m_DragPosition = event->position().toPoint();
    setCursor(Qt::ClosedHandCursor);
}

/** Moves as far as the view reaches, by what is painted. */
void GraphicViewLegend::mouseMoveEvent(QMouseEvent* event) {
    if (!m_IsDragging) {
        return;
    }
    const QPoint step = event->position().toPoint() - m_DragPosition;
    m_IsPlacedByUser = true;
    const int x =
        std::clamp(step.x(), -m_Box.left(), std::max(-m_Box.left(), m_Graphic->width() - m_Box.right() - 1));
    const int y =
        std::clamp(step.y(), -m_Box.top(), std::max(-m_Box.top(), m_Graphic->height() - m_Box.bottom() - 1));
    QRectF moved = frame();  // which may be elsewhere than the box in a small view
    moved.moveCenter(
        QPointF(m_Box.x() + m_Box.width() / 2.0, m_Graphic->height() - m_Box.y() - m_Box.height() / 2.0));
    setFrame(moved.translated(x, -y), false);
}

void GraphicViewLegend::mouseReleaseEvent(QMouseEvent* /*event*/) {
    m_IsDragging = false;
    unsetCursor();
}

void GraphicViewLegend::enterEvent(QEnterEvent* event) {
    QWidget::enterEvent(event);
    m_Graphic->dismissReadOut();
}

bool GraphicViewLegend::event(QEvent* event) {
    if (event->type() == QEvent::LayoutRequest) {
        place();
    }
    return QWidget::event(event);
}
