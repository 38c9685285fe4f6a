// SPDX-License-Identifier: GPL-3.0-or-later
#include "controls/chart/GraphicColors.h"

namespace {

QColor withAlpha(QColor color, int alpha) {
    color.setAlpha(alpha);
    return color;
}

}  // namespace

GraphicColors::GraphicColors(const QPalette& palette)
    : background(palette.color(QPalette::Base)),
      selection(palette.color(QPalette::Active, QPalette::Highlight)) {
    const QColor ink = palette.color(QPalette::Text);
    const bool isDark = background.lightness() < 128;
    text = withAlpha(ink, isDark ? 175 : 170);
    grid = withAlpha(ink, isDark ? 22 : 26);
    axis = withAlpha(ink, isDark ? 70 : 80);
    shadow = QColor(0, 0, 0, isDark ? 120 : 60);
}

QColor GraphicColors::onBackground(const QColor& color) const {
    const float part = color.alphaF();
    const auto mixed = [part](float over, float under) { return over * part + under * (1 - part); };
    return QColor::fromRgbF(mixed(color.redF(), background.redF()),
                            mixed(color.greenF(), background.greenF()),
                            mixed(color.blueF(), background.blueF()));
}
