// SPDX-License-Identifier: GPL-3.0-or-later
#include "controls/chart/GraphicMesh.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace {

constexpr double minute = 60;
constexpr double hour = 60 * minute;
constexpr double day = 24 * hour;

constexpr std::array timeSteps{1.0,       2.0,        5.0,        10.0,        15.0,        30.0,
                               minute,    2 * minute, 5 * minute, 10 * minute, 15 * minute, 30 * minute,
                               hour,      2 * hour,   3 * hour,   6 * hour,    12 * hour,   day,
                               2 * day,   5 * day,    10 * day,   20 * day,    50 * day,    100 * day,
                               200 * day, 500 * day,  1000 * day, 2000 * day,  5000 * day,  10000 * day};

bool isMultiple(double value, double cell) {
    const double cells = value / cell;
    return std::abs(cells - std::round(cells)) < 1e-6;
}

/** `cell` times 1, 2, 5, 10, 20 ... */
double decimalStep(double cell, double minimum) {
    const double decade = cell * std::pow(10.0, std::floor(std::log10(minimum / cell)));
    for (const double factor : {1.0, 2.0, 5.0}) {
        if (decade * factor >= minimum) {
            return decade * factor;
        }
    }
    return decade * 10;
}

}  // namespace

double GraphicMesh::coarsened(double cell, double minimum, Unit unit) {
    if (!std::isfinite(cell) || !std::isfinite(minimum) || cell <= 0) {
        return 0;
    }
    if (cell >= minimum) {
        return cell;
    }
    if (unit == Unit::Values) {
        return cell * std::exp2(std::ceil(std::log2(minimum / cell)));
    }
    const auto* const step = std::find_if(timeSteps.begin(), timeSteps.end(), [&](double candidate) {
        return candidate >= minimum && isMultiple(candidate, cell);
    });
    return step != timeSteps.end() ? *step : decimalStep(cell, minimum);
}

std::vector<double> GraphicMesh::lines(double from, double to, double step) {
    const double first = std::ceil(from / step);
    const double count = std::floor(to / step) - first + 1;
    std::vector<double> positions;
    if (step > 0 && count >= 1 && count <= maximumLines) {
        for (int i = 0; i < static_cast<int>(count); ++i) {
            positions.push_back((first + i) * step);
        }
    }
    return positions;
}
