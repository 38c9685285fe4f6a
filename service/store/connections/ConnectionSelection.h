// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <stop_token>
#include <string>
#include <vector>

#include "libs/sqlite/Database.h"
#include "libs/sqlite/Query.h"
#include "service/store/connections/BlockReader.h"
#include "service/store/connections/ConnectionBlock.h"
#include "service/store/connections/ConnectionQuery.h"

namespace service {

/**
 * The connections that pass a query's filter, by the numbers in their blocks and by the rows of those that stand
 * apart. What is read belongs to one state of the database while the caller holds a snapshot. For the thread of its
 * database.
 */
class ConnectionSelection {
  public:
    /** The connections of one block that pass the filter. */
    struct Block {
        std::int32_t number;
        bool isAllInTime;  ///< their times need no look
        Slots slots;
    };

    /** One that is not in its block, and passes the filter. */
    struct Apart {
        ConnectionId id;
        ConnectionNumbers numbers;  ///< an open one ends after all others
    };

    /** `database` must outlive the selection. */
    explicit ConnectionSelection(SQLite::Database& database);

    bool isValid() const;

    /** In place of what was selected before. False when it was stopped or the database cannot be read. */
    bool select(const ConnectionQuery& query, const std::stop_token& stop);

    /** Lets go of all memory and of what was read last. */
    void clear();

    std::size_t count() const;

    /** In the order of their ids. */
    const std::vector<Block>& blocks() const { return m_SelectedBlocks; }

    const std::vector<Apart>& apart() const { return m_SelectedApart; }

    /**
     * Calls `visit(block, numbers)` with one column, as in `connectionColumns`, of each block in which something is
     * left. False when it was stopped or the database cannot be read.
     */
    template <class Visit>
    bool forEachBlock(std::size_t column, Visit visit) {
        for (const Block& block : m_SelectedBlocks) {
            if (block.slots.isEmpty()) {
                continue;
            }
            const PackedColumn* numbers = read(column, block);
            if (numbers == nullptr) {
                return false;
            }
            visit(block, *numbers);
        }
        return true;
    }

    /** Why the last of the above failed; empty after a stop. */
    const std::string& lastError() const { return m_LastError; }

  private:
    bool readSince(const ConnectionQuery& query, std::uint64_t& since);
    bool selectBlocks(const ConnectionQuery& query, std::uint64_t since);
    bool selectApart(const ConnectionQuery& query, std::uint64_t since);
    static void limitIds(Block& block, std::optional<ConnectionId> newest);
    void removeFromBlock(ConnectionId id);
    bool checkTimes(std::uint64_t since, std::uint64_t until);
    bool checkKinds(const ConnectionQuery& query);

    const PackedColumn* read(std::size_t column, const Block& block);
    bool fail(const std::string& reason);

    SQLite::Database& m_Database;
    SQLite::Query m_KeptSince;
    SQLite::Query m_Heads;
    SQLite::Query m_Apart;
    std::array<BlockReader, connectionColumns.size()> m_Readers;

    std::stop_token m_Stop;
    std::vector<Block> m_SelectedBlocks;
    std::vector<Apart> m_SelectedApart;
    std::string m_LastError;
};

}  // namespace service
