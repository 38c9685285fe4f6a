// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/charts/HistoryGraphicMath.h"

#include <algorithm>

namespace {

constexpr double stepsInRange = 100.0;
constexpr double shortestSpan = 1.0;

struct Unit {
    double divider;  ///< how many of the unit before make one of this
    int result;      ///< index into `results`
};

/** The last one, which any range passes, is where the cascade starts over. */
constexpr Unit cascade[] = {{10, 1},  {6, 2},  {10, 3}, {6, 4},  {10, 5},
                            {2.4, 6}, {10, 7}, {10, 8}, {10, 9}, {0, 0}};
constexpr double results[] = {1, 10, 60, 600, 3600, 36000, 86400, 864000, 8640000, 86400000};

}  // namespace

HistoryGraphicMath::HistoryGraphicMath(double start, double end) : start(start), span(end - start) {
    if (span <= shortestSpan) {
        this->start = end - shortestSpan;
        span = shortestSpan;
    }
    step = std::max(1.0, span / stepsInRange);
}

double HistoryGraphicMath::gridStep(double span) {
    int result = 0;
    double units = span;
    for (const Unit& unit : cascade) {
        if (unit.divider > units) {
            break;
        }
        result = unit.result;
        units /= unit.divider;
    }
    return results[result];
}
