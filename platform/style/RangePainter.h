// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QPainter>
#include <QStyle>
#include <QStyleOption>

/** Draws what shows a place in a range: progress bars, sliders and scroll bars. */
class RangePainter {
  public:
    /** A thin bar, with the text right of it where there is one. `phase`, 0 to 1, is where an indeterminate
     * bar is in its turn. */
    static void drawProgress(QPainter& painter, const QStyleOptionProgressBar& bar, qreal phase);

    /** `handle` is the room of the handle. */
    static void drawSlider(QPainter& painter, const QStyleOptionSlider& slider, const QRect& handle);

    /** On `ground`, wider and stronger under the mouse. `handle` is the room of the handle. */
    static void drawScrollBar(QPainter& painter, const QStyleOptionSlider& bar, const QRect& handle,
                              const QColor& ground);

    /** The room of a part of a scroll bar. All of it is track: there are no arrows. */
    static QRect scrollBarRoom(const QStyleOptionSlider& bar, QStyle::SubControl part);
};
