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

// What stands in the column `life`; earlier versions wrote 0 to 32 for any closed connection.
inline constexpr int takenInLife = 0;  ///< closed, and in its block (see ConnectionBlocks.h)
inline constexpr int openLife = 33;    ///< lasts until now, whenever that is
inline constexpr int closedLife = 34;  ///< closed, and waits to be taken into its block

int lifeColumn(const ConnectionRecord& connection);

/**
 * One byte for the family, 4 or 16 for the address (none for an unknown family), two for the port, the higher
 * one first: comparing two blobs byte by byte compares family, address and port as numbers.
 */
std::vector<std::uint8_t> toColumn(const IpAddress& address);

/** An empty address for a blob that is none. */
IpAddress addressFromColumn(std::span<const std::uint8_t> blob);

}  // namespace service
