// SPDX-License-Identifier: GPL-3.0-or-later
#include "controls/chart/GraphicViewGraphicTitleLegendItem.h"

#include <QFontMetrics>
#include <QPainter>

GraphicViewGraphicTitleLegendItem* GraphicViewGraphicTitleLegendItem::itemWithLegend(
    GraphicViewLegend* legend) {
    return new GraphicViewGraphicTitleLegendItem(legend);
}

void GraphicViewGraphicTitleLegendItem::setTitle(const QString& title) {
    m_Title = title;
    setAccessibleName(title);
    contentChanged();
}

void GraphicViewGraphicTitleLegendItem::draw(QPainter& painter) const {
    painter.setFont(titleFont());
    painter.setPen(palette().color(QPalette::WindowText));
    painter.drawText(rect(), Qt::AlignCenter,
                     QFontMetrics(titleFont()).elidedText(m_Title, Qt::ElideRight, width()));
}

QSize GraphicViewGraphicTitleLegendItem::sizeHint() const {
    const QFontMetrics metrics(titleFont());
    return {metrics.horizontalAdvance(m_Title) + 1, metrics.height()};
}

QFont GraphicViewGraphicTitleLegendItem::titleFont() const {
    QFont heavier = font();
    heavier.setWeight(QFont::DemiBold);
    return heavier;
}
