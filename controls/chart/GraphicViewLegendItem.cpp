// SPDX-License-Identifier: GPL-3.0-or-later
#include "controls/chart/GraphicViewLegendItem.h"

#include <QPainter>

#include "controls/chart/GraphicView.h"
#include "controls/chart/GraphicViewLegend.h"

GraphicViewLegendItem::GraphicViewLegendItem(GraphicViewLegend* legend) : QWidget(legend), m_Legend(legend) {
    show();
}

void GraphicViewLegendItem::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    draw(painter);
}

void GraphicViewLegendItem::contentChanged() {
    m_Legend->graphic()->placeLegends();
    update();
}
