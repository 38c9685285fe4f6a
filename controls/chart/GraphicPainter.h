// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QColor>
#include <QPalette>
#include <QPolygonF>

#include "controls/chart/GraphicLayout.h"
#include "controls/chart/GraphicScene.h"

class QPainter;

/** The colours of a chart's parts, derived from a palette: quiet in light and in dark. */
struct GraphicColors {
    explicit GraphicColors(const QPalette& palette);

    QColor background;
    QColor text;  ///< of labels and captions
    QColor grid;
    QColor axis;
    QColor selection;
    QColor shadow;
};

/** Draws what is in a chart's area and its labels; the grid is not its business. Maps numbers to pixels only. */
class GraphicPainter {
  public:
    GraphicPainter(const GraphicScene& scene, const GraphicLayout& layout, const GraphicColors& colors);

    void drawSelection(QPainter& painter) const;
    void drawLines(QPainter& painter) const;
    void drawMarks(QPainter& painter) const;  ///< of the points at a selected X
    void drawLabels(QPainter& painter) const;

    /** The mark of a line: a disc, a square, a diamond in turn, so that colour is not all that tells them apart. */
    static void drawMark(QPainter& painter, const QPointF& center, qreal radius, unsigned line);

  private:
    void drawLine(QPainter& painter, const GraphicScene::Line& line) const;
    QPolygonF polyline(const GraphicLine& line) const;
    void drawCaptions(QPainter& painter) const;

    const GraphicScene& m_Scene;
    const GraphicLayout& m_Layout;
    const GraphicColors& m_Colors;
};
