// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>

#include "libs/sqlite/Database.h"
#include "libs/sqlite/Query.h"
#include "service/store/connections/ConnectionBlock.h"
#include "service/traffic/Moment.h"

namespace service {

/**
 * Writes the blocks of connections, by which lists are filtered and sorted: the same numbers as in the rows, column
 * by column, 256 ids at a time. A closed connection does not change any more, so it is taken into its block once,
 * together with many others; until then, and while it is open, lists look at its row.
 *
 * All of it happens within a transaction that the caller has begun. For the thread of its database.
 */
class ConnectionBlocks {
  public:
    explicit ConnectionBlocks(SQLite::Database& database);

    bool isValid() const;

    /** Takes in the closed connections that wait for it once there are `enough` of them. */
    bool takeInClosed(std::int64_t enough = 1024);

    /** Takes in every closed connection of a database that had no blocks yet. */
    static bool takeInAll(SQLite::Database& database);

    /**
     * Drops the connections of one block, `first` or a later one, that began and ended before `moment`; after it
     * `first` is the block to go on with, or nothing where there is none left. Those that still wait to be taken
     * in stay.
     */
    bool dropBefore(Moment moment, std::optional<std::int32_t>& first);

  private:
    bool takeIn(SQLite::Query& rows);
    bool read(std::int32_t number, ConnectionBlock& block);
    bool write(std::int32_t number, const ConnectionBlock& block);
    bool erase(std::int32_t number);
    bool dropFrom(std::int32_t number, Moment moment);

    struct Column {
        Column(SQLite::Database& database, const char* table);

        SQLite::Query read;
        SQLite::Query write;
        SQLite::Query erase;
    };

    SQLite::Query m_CountClosed;
    SQLite::Query m_SelectClosed;
    SQLite::Query m_MarkTakenIn;
    SQLite::Query m_FindOld;
    SQLite::Query m_DropRow;
    SQLite::Query m_ReadSlots;
    SQLite::Query m_WriteHead;
    SQLite::Query m_EraseHead;
    std::array<Column, connectionColumns.size()> m_Columns;
};

}  // namespace service
