// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
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
 * Filters and sorts connections by the numbers in their blocks and by the rows of those that stand apart.
 *
 * It needs little memory beside the ids that it returns: it goes over the blocks several times, and each time
 * gathers and sorts only the part of the connections that comes next in the order. For the thread of its database.
 */
class ConnectionLister {
  public:
    /** What sorting may take beside the memory of the ids, in bytes. More of it means fewer times over the blocks. */
    static constexpr std::size_t usualSortMemory = 12'000'000;

    /** `database` must outlive the lister. */
    explicit ConnectionLister(SQLite::Database& database, std::size_t sortMemory = usualSortMemory);

    bool isValid() const;

    /**
     * Ids of the connections that pass the query's filter, in its order; equal ones in the order of their ids.
     * `onCounted` is told how many they are before memory is taken for them. False when it was stopped or the
     * database cannot be read, see `lastError`, which is empty after a stop.
     */
    bool list(const ConnectionQuery& query, std::vector<ConnectionId>& ids, const std::stop_token& stop,
              const std::function<void(std::size_t count)>& onCounted);

    const std::string& lastError() const { return m_LastError; }

  private:
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

    /** Column and place of what is compared; flipped where greater ones come first. */
    struct SortKey {
        explicit SortKey(const ConnectionQuery& query);

        bool isSorted = false;
        std::size_t column = 0;
        std::size_t number = 0;
        std::uint64_t flip = 0;
    };

    bool select(const ConnectionQuery& query);
    bool readSince(const ConnectionQuery& query, std::uint64_t& since);
    bool selectBlocks(const ConnectionQuery& query, std::uint64_t since);
    bool selectApart(const ConnectionQuery& query, std::uint64_t since);
    static void limitIds(Block& block, std::optional<ConnectionId> newest);
    void removeFromBlock(ConnectionId id);
    bool checkTimes(std::uint64_t since, std::uint64_t until);
    bool checkKinds(const ConnectionQuery& query);
    std::size_t count() const;

    template <class Entry>
    std::size_t partSize(std::size_t done, std::size_t total) const;
    void listById(std::vector<ConnectionId>& ids) const;
    template <std::size_t size>
    bool sort(const SortKey& key, std::vector<ConnectionId>& ids);
    template <class Entry>
    bool sortPart(const SortKey& key, const Entry& from, const Entry& to, std::vector<ConnectionId>& ids);
    template <class Entry>
    bool sample(const SortKey& key, std::size_t stride, std::vector<Entry>& entries);
    template <class Entry>
    bool gather(const SortKey& key, const Entry& from, const Entry& to, std::vector<Entry>& entries);
    template <class IsWanted, class Visit>
    bool forEachBlock(std::size_t column, IsWanted isWanted, Visit visit);

    bool fail(const std::string& reason);

    SQLite::Database& m_Database;
    const std::size_t m_SortMemory;
    SQLite::Query m_KeptSince;
    SQLite::Query m_Heads;
    SQLite::Query m_Apart;
    std::array<BlockReader, connectionColumns.size()> m_Readers;

    // Of the list that is being made:
    std::stop_token m_Stop;
    std::vector<Block> m_SelectedBlocks;
    std::vector<Apart> m_SelectedApart;
    std::string m_LastError;
};

}  // namespace service
