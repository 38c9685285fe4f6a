// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "controls/chart/GraphicViewLegendItem.h"

/** A title in a legend, centred, elided where it has no room. */
class GraphicViewGraphicTitleLegendItem : public GraphicViewLegendItem {
    Q_OBJECT

  public:
    /** The legend owns the item. */
    static GraphicViewGraphicTitleLegendItem* itemWithLegend(GraphicViewLegend* legend);

    void setTitle(const QString& title);
    QString title() const { return m_Title; }

    void draw(QPainter& painter) const override;
    QSize sizeHint() const override;

  private:
    using GraphicViewLegendItem::GraphicViewLegendItem;
    QFont titleFont() const;

    QString m_Title;
};
