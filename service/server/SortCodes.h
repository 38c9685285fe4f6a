// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>

#include "service/server/ApplicationsCursor.h"
#include "service/store/connections/ConnectionQuery.h"

namespace service {

// The wire's numbers as codes; a number that stands for nothing means the daemon's own order.

constexpr SortDirection sortDirection(std::int32_t number) {
    return number == 0 || number == 1 ? static_cast<SortDirection>(number) : SortDirection::None;
}

constexpr ApplicationSortField applicationSortField(std::int32_t number) {
    return number >= 0 && number < static_cast<std::int32_t>(ApplicationSortField::None)
               ? static_cast<ApplicationSortField>(number)
               : ApplicationSortField::None;
}

constexpr ConnectionSortField connectionSortField(std::int32_t number) {
    return number >= 0 && number < static_cast<std::int32_t>(ConnectionSortField::None)
               ? static_cast<ConnectionSortField>(number)
               : ConnectionSortField::None;
}

}  // namespace service
