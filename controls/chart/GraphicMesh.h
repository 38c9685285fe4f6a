// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <vector>

/** Where the lines of a chart's grid are: multiples of a step, at a sane distance whatever the step is. */
class GraphicMesh {
  public:
    /** Y grows by doubling; X, which is in seconds, through the steps of clock and calendar. */
    enum class Unit { Seconds, Values };

    /**
     * The step, a multiple of `cell` where it can be, that is at least `minimum`; `cell` itself if that will do.
     * 0, for no grid, if there is no such number.
     */
    static double coarsened(double cell, double minimum, Unit unit);

    /** Multiples of `step` between two values, both inclusive; none if there were more than `maximumLines`. */
    static std::vector<double> lines(double from, double to, double step);

    static constexpr int maximumLines = 1000;
};
