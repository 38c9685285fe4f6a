// SPDX-License-Identifier: GPL-3.0-or-later
#include "controls/chart/GraphicLayout.h"

#include <algorithm>

#include "controls/chart/GraphicMesh.h"
#include "controls/chart/GraphicScene.h"

namespace {

// All in pixels.
constexpr qreal margin = 12;  // around everything
constexpr qreal labelGap = 6;
constexpr qreal leastGridGap = 8;    // between the lines of the grid as they are wanted
constexpr qreal coarseGridGap = 32;  // at least, once that would be too dense

// Of the view, below which a part is left out.
constexpr int leastWidthForYLabels = 120;
constexpr int leastHeightForXLabels = 72;
constexpr int leastWidthForYCaption = 240;
constexpr int leastHeightForXCaption = 180;
constexpr int heightPerLabelLine = 80;
constexpr int mostLabelLines = 3;

QFont captionFont(const QFont& font) {
    QFont smaller = font;
    smaller.setPointSizeF(std::max(6.0, font.pointSizeF() - 1));
    return smaller;
}

qreal widest(const std::vector<AxisLabels::Label>& labels) {
    qreal width = 0;
    for (const auto& label : labels) {
        width = std::max(width, label.rect.width());
    }
    return width;
}

double gridStep(const AxisLabels::Axis& axis, GraphicMesh::Unit unit) {
    const bool isTooDense = axis.cell < leastGridGap * axis.valuesPerPixel();
    return GraphicMesh::coarsened(axis.cell, isTooDense ? coarseGridGap * axis.valuesPerPixel() : 0, unit);
}

}  // namespace

GraphicLayout::GraphicLayout(const GraphicScene& scene, const QSize& size, const QFont& font)
    : m_Font(captionFont(font)), m_Viewport(scene.viewport), m_Cell(scene.meshCellSize) {
    m_Area = QRectF({}, size).adjusted(margin, margin, -margin, -margin);
    if (isEmpty()) {
        return;
    }
    const QFontMetricsF metrics(m_Font);
    const auto text = [&scene](int axe) {
        return [&scene, axe](double value) { return scene.labelText(value, axe); };
    };
    const AxisLabels xLabels(metrics, text(0));
    const AxisLabels yLabels(metrics, text(1));
    const bool hasXLabels = size.height() >= leastHeightForXLabels;
    const bool hasYLabels = size.width() >= leastWidthForYLabels;
    if (hasXLabels) {  // a guess, so that Y knows its height
        m_Area.adjust(0, 0, 0, -2 * metrics.height());
    }
    if (hasYLabels) {
        placeYAxis(yLabels, size, size.width() >= leastWidthForYCaption && !scene.descriptions[1].isEmpty());
    }
    if (hasXLabels) {
        m_Area.setBottom(size.height() - margin);
        placeXAxis(xLabels, size,
                   size.height() >= leastHeightForXCaption && !scene.descriptions[0].isEmpty());
    }
    if (isEmpty()) {
        return;
    }
    if (hasYLabels) {
        m_YLabels = yLabels.vertical(yAxis(), size.width() / 3.0);
    }
    m_Area = m_Area.toAlignedRect();
    m_XStep = gridStep(xAxis(), GraphicMesh::Unit::Seconds);
    m_YStep = gridStep(yAxis(), GraphicMesh::Unit::Values);
}

void GraphicLayout::placeYAxis(const AxisLabels& labels, const QSize& size, bool hasCaption) {
    const qreal lineHeight = QFontMetricsF(m_Font).height();
    m_Area.setLeft(labelGap + (hasCaption ? lineHeight + labelGap : 0));
    m_Area.adjust(widest(labels.vertical(yAxis(), size.width() / 3.0)) + labelGap, 0, 0, 0);
    if (hasCaption) {
        m_YCaption = QRectF(labelGap, m_Area.top(), lineHeight, m_Area.height());
    }
}

void GraphicLayout::placeXAxis(const AxisLabels& labels, const QSize& size, bool hasCaption) {
    const qreal lineHeight = QFontMetricsF(m_Font).height();
    const qreal captionRoom = hasCaption ? lineHeight + labelGap : 0;
    const int lines = std::clamp(size.height() / heightPerLabelLine, 1, mostLabelLines);
    m_XLabels = labels.horizontal(xAxis(), labelGap, size.width() - labelGap, lines);
    qreal room = 0;
    for (const auto& label : m_XLabels) {
        room = std::max(room, label.rect.height());
    }
    const qreal gap = lineHeight / 2 + 2;  // below the lowest label of Y, which stands beside the axis
    m_Area.setBottom(size.height() - labelGap - captionRoom - room - gap);
    for (auto& label : m_XLabels) {
        label.rect.translate(0, m_Area.bottom() + gap);
    }
    if (hasCaption) {
        m_XCaption = QRectF(m_Area.left(), size.height() - labelGap - lineHeight, m_Area.width(), lineHeight);
        m_YCaption.setBottom(m_Area.bottom());
    }
}

double GraphicLayout::valueX(qreal pixel) const {
    return m_Viewport.left() + (pixel - m_Area.left()) / m_Area.width() * m_Viewport.width();
}

AxisLabels::Axis GraphicLayout::xAxis() const {
    return {m_Viewport.left(), m_Viewport.right(), m_Cell.width(), m_Area.left(), m_Area.right()};
}

AxisLabels::Axis GraphicLayout::yAxis() const {
    return {m_Viewport.top(), m_Viewport.bottom(), m_Cell.height(), m_Area.bottom(), m_Area.top()};
}
