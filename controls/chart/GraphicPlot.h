// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QPalette>
#include <functional>
#include <memory>

#include "controls/chart/GraphicLayout.h"

class QPaintDevice;
class QPainter;
struct GraphicScene;

/**
 * Draws a chart through QCustomPlot, whose large header only this class's source sees. It is never a window of
 * its own: it paints on a pixmap for the screen and on files for export. Main thread.
 */
class GraphicPlot {
  public:
    struct Look {
        QSize size;
        QColor background;  ///< invalid for what the device has already
        QPalette palette;
        QFont font;
    };

    /** `scene` must outlive the plot. */
    explicit GraphicPlot(const GraphicScene& scene);
    ~GraphicPlot();
    GraphicPlot(const GraphicPlot&) = delete;
    GraphicPlot& operator=(const GraphicPlot&) = delete;

    /** Draws the chart on `device`, then calls `addition`, if there is one, with the painter. */
    void draw(QPaintDevice& device, const Look& look, const std::function<void(QPainter&)>& addition = {});

    /** Where everything was drawn the last time. */
    const GraphicLayout& layout() const;

  private:
    struct Engine;
    std::unique_ptr<Engine> m_Engine;
};
