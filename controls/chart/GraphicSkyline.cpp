// SPDX-License-Identifier: GPL-3.0-or-later
#include "controls/chart/GraphicSkyline.h"

#include <algorithm>

qreal GraphicSkyline::topBetween(qreal left, qreal right) const {
    qreal top = area().bottom();
    for (const GraphicScene::Line& line : m_Scene.lines) {
        const auto [first, last] = line.data.drawn(m_Layout.valueX(left), m_Layout.valueX(right));
        for (std::size_t i = first; i < last; ++i) {
            top = std::min(top, m_Layout.pixelY(line.data.points()[i].y));
        }
    }
    return top;
}
