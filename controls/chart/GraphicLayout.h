// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QFont>
#include <QRectF>
#include <QSize>
#include <vector>

#include "controls/chart/AxisLabels.h"

struct GraphicScene;

/** Where the parts of a chart of a certain size are, in pixels. A small chart does without captions and labels. */
class GraphicLayout {
  public:
    GraphicLayout() = default;
    GraphicLayout(const GraphicScene& scene, const QSize& size, const QFont& font);

    const QRectF& area() const { return m_Area; }  ///< that the lines are drawn in
    const QRectF& viewport() const { return m_Viewport; }

    /** Steps of the grid in data units, 0 for none. */
    double xStep() const { return m_XStep; }
    double yStep() const { return m_YStep; }

    const std::vector<AxisLabels::Label>& xLabels() const { return m_XLabels; }
    const std::vector<AxisLabels::Label>& yLabels() const { return m_YLabels; }

    /** Of the axes' captions; null rectangles where there is no room. That of Y is read upwards. */
    const QRectF& xCaption() const { return m_XCaption; }
    const QRectF& yCaption() const { return m_YCaption; }

    /** The font of labels and captions. */
    const QFont& font() const { return m_Font; }

    qreal pixelX(double x) const { return xAxis().pixel(x); }
    qreal pixelY(double y) const { return yAxis().pixel(y); }
    double valueX(qreal pixel) const;

    bool isEmpty() const { return m_Area.isEmpty() || m_Viewport.isEmpty(); }

  private:
    AxisLabels::Axis xAxis() const;
    AxisLabels::Axis yAxis() const;
    void placeYAxis(const AxisLabels& labels, const QSize& size, bool hasCaption);
    void placeXAxis(const AxisLabels& labels, const QSize& size, bool hasCaption);

    QFont m_Font;
    QRectF m_Area;
    QRectF m_Viewport;
    QSizeF m_Cell;
    double m_XStep = 0;
    double m_YStep = 0;
    std::vector<AxisLabels::Label> m_XLabels;
    std::vector<AxisLabels::Label> m_YLabels;
    QRectF m_XCaption;
    QRectF m_YCaption;
};
