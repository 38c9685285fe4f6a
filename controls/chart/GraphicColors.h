// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QColor>
#include <QPalette>

/** The colours of a chart's parts, derived from a palette: quiet in light and in dark. */
struct GraphicColors {
    explicit GraphicColors(const QPalette& palette);

    QColor background;
    QColor text;  ///< of labels and captions
    QColor grid;
    QColor axis;
    QColor selection;  ///< as in an active window: a chart is watched from others
    QColor shadow;

    /** What `color` looks like on the background, without its transparency. */
    QColor onBackground(const QColor& color) const;
};
