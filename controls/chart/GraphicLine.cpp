// SPDX-License-Identifier: GPL-3.0-or-later
#include "controls/chart/GraphicLine.h"

#include <algorithm>
#include <cmath>

namespace {

bool isBefore(const GraphicLine::Point& point, double x) {
    return point.x < x;
}
bool isAfter(double x, const GraphicLine::Point& point) {
    return x < point.x;
}

}  // namespace

void GraphicLine::add(Point point) {
    if (!std::isfinite(point.x) || !std::isfinite(point.y)) {
        return;
    }
    if (m_Points.empty() || m_Points.back().x <= point.x) {
        m_Points.push_back(point);
        return;
    }
    m_Points.insert(std::upper_bound(m_Points.begin(), m_Points.end(), point.x, isAfter), point);
}

void GraphicLine::removeBefore(double x) {
    m_Points.erase(m_Points.begin(), std::lower_bound(m_Points.begin(), m_Points.end(), x, isBefore));
}

void GraphicLine::removeAfter(double x) {
    m_Points.erase(std::upper_bound(m_Points.begin(), m_Points.end(), x, isAfter), m_Points.end());
}

GraphicLine::Range GraphicLine::within(double from, double to) const {
    const auto first = std::lower_bound(m_Points.begin(), m_Points.end(), from, isBefore);
    const auto last = std::upper_bound(first, m_Points.end(), to, isAfter);
    return {first - m_Points.begin(), last - m_Points.begin()};
}

GraphicLine::Range GraphicLine::drawn(double from, double to) const {
    const auto [first, last] = within(from, to);
    return {first - std::min<std::size_t>(first, 1), std::min(last + 1, m_Points.size())};
}

const GraphicLine::Point* GraphicLine::nearest(double x) const {
    if (m_Points.empty()) {
        return nullptr;
    }
    auto right = std::lower_bound(m_Points.begin(), m_Points.end(), x, isBefore);
    if (right == m_Points.end()) {
        return &m_Points.back();
    }
    if (right != m_Points.begin() && x - std::prev(right)->x <= right->x - x) {
        --right;
    }
    return &*right;
}
