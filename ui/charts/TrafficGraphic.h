// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QSizeF>
#include <QString>

class GraphicView;

/** What all charts of traffic have in common: two lines, received and sent, in bytes, and two legends. Main thread. */
class TrafficGraphic {
  public:
    enum Line : unsigned { ReceivedLine = 0, SentLine = 1 };
    enum Axe { XAxe = 0, YAxe = 1 };

    /** To a chart without lines: one for each of `Line`, in its colour. */
    static void appendLines(GraphicView& graphic, bool hasDropShadow);

    /**
     * Says at the top right what the lines are, where their colours can be chosen, and `title` at the top in the
     * middle. `colorLegendSize`, in pixels, is what the box begins with before it is fitted to its items. The chart
     * must have its size already.
     */
    static void addLegends(GraphicView& graphic, const QSizeF& colorLegendSize, const QString& title);

    /** `bytes` in megabits of 2^20, with three decimals and no unit: a label of the Y axis. */
    static QString bytesToMegabitsString(double bytes);

    /** `bytes` in the unit that suits them, 1 kB being 1024 B: "97.7 kB". */
    static QString bytesToReadableString(double bytes);
};
