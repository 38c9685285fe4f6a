// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "libs/utils/src/IpAddress.h"
#include "service/ledger/Records.h"
#include "service/traffic/Moment.h"

namespace service {

// How values of the records look in the columns of the database.

/** Seconds since the epoch, UTC. */
std::int64_t toColumn(Moment moment);
Moment momentFromColumn(std::int64_t seconds);

/** The lives of closed connections reach from 0 to here; 2^32 seconds are 136 years. */
inline constexpr int longestLife = 32;

/** The life of a connection that is open: it lasts until now, whenever that is. */
inline constexpr int openLife = longestLife + 1;

/** The number of bits in the seconds of a life: it lasted less than 2^bits seconds. */
int lifeColumn(const ConnectionRecord& connection);

/**
 * One byte for the family, 4 or 16 for the address (none for an unknown family), two for the port, the higher
 * one first: comparing two blobs byte by byte compares family, address and port as numbers.
 */
std::vector<std::uint8_t> toColumn(const IpAddress& address);

/** An empty address for a blob that is none. */
IpAddress addressFromColumn(std::span<const std::uint8_t> blob);

}  // namespace service
