// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QColor>
#include <QRectF>
#include <QString>
#include <array>
#include <optional>
#include <vector>

#include "controls/chart/GraphicLine.h"

class GraphicViewDelegate;

/** What a chart shows, in data coordinates. Plain data: the view changes it, the plot draws it. */
struct GraphicScene {
    struct Line {
        GraphicLine data;
        QColor color = Qt::gray;
        int style = 0;
        bool hasDropShadow = false;
    };

    /** A stretch of an axis; a single position where both ends are the same and `isPoint` is set. */
    struct Selection {
        int axe;
        double from;
        double to;
        bool isPoint;
    };

    std::vector<Line> lines;
    QRectF viewport{0, 0, 1, 1};  ///< x, y are the lower left point
    QSizeF meshCellSize;
    std::array<QString, 2> descriptions;  ///< of the X and the Y axis
    std::optional<Selection> selection;
    GraphicViewDelegate* delegate = nullptr;

    /** Text of the delegate for an axis label; empty without a delegate. */
    QString labelText(double value, int axe) const;
};
