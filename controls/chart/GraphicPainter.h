// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QPolygonF>

#include "controls/chart/GraphicColors.h"
#include "controls/chart/GraphicLayout.h"
#include "controls/chart/GraphicScene.h"

class QPainter;

/**
 * Draws what is in a chart's area and its labels; the grid is not its business. Maps numbers to pixels only.
 *
 * Lines are drawn as separate segments in opaque colors: to Qt's raster engine one antialiased translucent polyline of
 * 105 points that is wider than a pixel costs 40 ms, its opaque segments 0.3 ms.
 */
class GraphicPainter {
  public:
    GraphicPainter(const GraphicScene& scene, const GraphicLayout& layout, const GraphicColors& colors);

    void drawFills(QPainter& painter) const;  ///< of lines of style 1; belongs below the grid
    void drawSelection(QPainter& painter) const;
    void drawLines(QPainter& painter) const;
    void drawMarks(QPainter& painter) const;  ///< of the points at a selected X
    void drawLabels(QPainter& painter) const;

    /** The mark of a line: a disc, a square, a diamond in turn, so that colour is not all that tells them apart. */
    static void drawMark(QPainter& painter, const QPointF& center, qreal radius, unsigned line);

  private:
    void drawSegments(QPainter& painter, const QPolygonF& points, const QPointF& offset,
                      const QColor& color) const;
    QPolygonF polyline(const GraphicLine& line) const;
    void drawCaptions(QPainter& painter) const;

    const GraphicScene& m_Scene;
    const GraphicLayout& m_Layout;
    const GraphicColors& m_Colors;
};
