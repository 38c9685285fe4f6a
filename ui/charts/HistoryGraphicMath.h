// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

/** How a chart of the past divides its range. Moments are seconds since 1970, the rest are seconds. */
struct HistoryGraphicMath {
    /** A range of a second or less, or one that ends before it starts, is the second before `end`. */
    HistoryGraphicMath(double start, double end);

    double start;  ///< X = 0 of the chart
    double span;
    double step;  ///< between two points: a hundredth of the range, and at least a second

    /** X of the last point at most: a few lie behind the range's end. */
    double limit() const { return span + 4 * step; }

    double viewportWidth() const { return span + 2 * step; }

    /** Percent done at X = `x`; never quite 100. */
    double progress(double x) const { return x / (step + limit()) * 100.0; }

    /**
     * The grid's step on the time axis for a range of `span`: the largest of 1 s, 10 s, 1 min, 10 min, 1 h, 10 h and
     * 1, 10 and 100 days that is not longer than the range. From 1000 days on it is 1 s again, on purpose.
     */
    static double gridStep(double span);
};
