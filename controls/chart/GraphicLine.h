// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <deque>
#include <utility>

/**
 * The points of a chart's line in the order of X, 8 bytes each: a week of seconds is 4.8 MB. What lies outside
 * the viewport costs no time when the line is drawn. Main thread.
 */
class GraphicLine {
  public:
    struct Point {
        float x;
        float y;
    };

    /** Indexes into `points()`, the second one exclusive. */
    using Range = std::pair<std::size_t, std::size_t>;

    /** Appends the point, or inserts it where X belongs. One that is not finite is left out. */
    void add(Point point);
    void clear() { m_Points.clear(); }

    void removeBefore(double x);
    void removeAfter(double x);

    const std::deque<Point>& points() const { return m_Points; }

    /** The points between two X, both inclusive. */
    Range within(double from, double to) const;

    /** The same and a neighbour on each side: what it takes to draw the line between two X. */
    Range drawn(double from, double to) const;

    /** The point that is nearest to `x`, null for an empty line. */
    const Point* nearest(double x) const;

  private:
    std::deque<Point> m_Points;
};
