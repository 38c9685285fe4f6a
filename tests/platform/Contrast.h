// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QColor>
#include <algorithm>
#include <cmath>

/** The contrast of two colours as WCAG 2.1 defines it: 1, for equal ones, to 21. */
inline double contrast(const QColor& one, const QColor& other) {
    const auto linear = [](double c) {
        return c <= 0.03928 ? c / 12.92 : std::pow((c + 0.055) / 1.055, 2.4);
    };
    const auto luminance = [linear](const QColor& c) {
        return 0.2126 * linear(c.redF()) + 0.7152 * linear(c.greenF()) + 0.0722 * linear(c.blueF());
    };
    const auto [darker, lighter] = std::minmax({luminance(one), luminance(other)});
    return (lighter + 0.05) / (darker + 0.05);
}
