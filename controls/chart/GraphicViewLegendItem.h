// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QWidget>

class GraphicViewLegend;

/** A row of a legend, which owns it. This one is empty and takes no room: what a new legend begins with. */
class GraphicViewLegendItem : public QWidget {
    Q_OBJECT

  public:
    explicit GraphicViewLegendItem(GraphicViewLegend* legend);

    /** Draws itself from (0, 0) on, as large as it is. */
    virtual void draw(QPainter& /*painter*/) const {}

    QSize sizeHint() const override { return {0, 0}; }

  protected:
    void paintEvent(QPaintEvent* event) override;

    /** To be called when its size or look has changed. */
    void contentChanged();

    GraphicViewLegend* legend() const { return m_Legend; }

  private:
    GraphicViewLegend* m_Legend;
};
