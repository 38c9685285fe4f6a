// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <optional>

#include "service/ledger/Records.h"
#include "service/traffic/Moment.h"

namespace service {

/** What a list of connections is sorted by. On the wire: never renumber. */
enum class ConnectionSortField : std::int32_t {
    StartTime = 0,
    EndTime = 1,
    Direction = 2,
    ReceivedBytes = 3,
    SentBytes = 4,
    LocalAddress = 5,
    RemoteAddress = 6,
    None = 7,  ///< the daemon's own order, by id
};

/** On the wire: never renumber. */
enum class SortDirection : std::int32_t { Descending = 0, Ascending = 1, None = 2 };

/** Which connections, in which order. One that is open ends later than any other. */
struct ConnectionQuery {
    Moment from;  ///< connections whose life [start, end] overlaps [from, to], both inclusive
    Moment to;
    std::optional<ApplicationId> application;
    std::optional<std::int32_t> socketProtocol;
    ConnectionSortField sortField = ConnectionSortField::None;
    SortDirection sortDirection = SortDirection::None;
    std::optional<ConnectionId> newest = std::nullopt;  ///< none with a greater id
};

}  // namespace service
