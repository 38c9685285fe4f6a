// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QStyle>
#include <optional>

/** The rhythm of the interface: sizes and distances, most of them multiples of four pixels. */
class InterfaceMetrics {
  public:
    /** In pixels; nothing where Fusion's own measure stands. */
    static std::optional<int> pixels(QStyle::PixelMetric metric);
};
