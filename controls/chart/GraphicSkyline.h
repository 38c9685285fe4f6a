// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "controls/chart/GraphicLayout.h"
#include "controls/chart/GraphicScene.h"

/** How high the lines of a chart reach. It refers to both and is of use as long as they stay as they are. */
class GraphicSkyline {
  public:
    GraphicSkyline(const GraphicScene& scene, const GraphicLayout& layout)
        : m_Scene(scene), m_Layout(layout) {}

    /** That the lines are drawn in, in pixels of the view. */
    const QRectF& area() const { return m_Layout.area(); }

    /**
     * The Y, in pixels of the view, below which every line stays between two X, also in pixels: at least, since the
     * points beside them count too.
     */
    qreal topBetween(qreal left, qreal right) const;

  private:
    const GraphicScene& m_Scene;
    const GraphicLayout& m_Layout;
};
