// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>

/** How a table is sorted by a column. On the wire: never renumber. */
enum SortDirection : std::int32_t { Descending = 0, Ascending = 1, Unsorted = 2 };

/** What the next click on a header makes of it: ascending, descending, unsorted, and again. */
constexpr std::int32_t nextDirection(std::int32_t direction) {
    switch (direction) {
        case Ascending:
            return Descending;
        case Descending:
            return Unsorted;
        default:
            return Ascending;
    }
}
