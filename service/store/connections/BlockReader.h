// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <cstdint>

#include "libs/sqlite/Database.h"
#include "libs/sqlite/Query.h"
#include "service/store/connections/ConnectionBlock.h"

namespace service {

/** Reads one column of the connections' blocks, at best in their order. For the thread of its database. */
class BlockReader {
  public:
    /** The column's number in `connectionColumns`. */
    BlockReader(SQLite::Database& database, std::size_t column);

    bool isValid() const { return m_Rows.IsValid(); }

    /** That block's numbers, valid until the next call; null when it is not there or damaged. */
    const PackedColumn* find(std::int32_t block);

    /** To be called in the end: lets go of what the last block was read from. */
    void reset();

  private:
    bool step();

    std::size_t m_Column;
    SQLite::Query m_Rows;
    std::int64_t m_At = -1;  ///< the block on which the query stands
    PackedColumn m_Numbers;
};

}  // namespace service
