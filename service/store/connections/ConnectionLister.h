// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <stop_token>
#include <string>
#include <vector>

#include "libs/sqlite/Database.h"
#include "service/store/connections/ConnectionQuery.h"
#include "service/store/connections/ConnectionSelection.h"

namespace service {

/**
 * Sorts the connections of a `ConnectionSelection`.
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

    bool isValid() const { return m_Selection.isValid(); }

    /**
     * Ids of the connections that pass the query's filter, in its order; equal ones in the order of their ids.
     * `onCounted` is told how many they are before memory is taken for them. False when it was stopped or the
     * database cannot be read, see `lastError`, which is empty after a stop.
     */
    bool list(const ConnectionQuery& query, std::vector<ConnectionId>& ids, const std::stop_token& stop,
              const std::function<void(std::size_t count)>& onCounted);

    const std::string& lastError() const { return m_Selection.lastError(); }

  private:
    /** Column and place of what is compared; flipped where greater ones come first. */
    struct SortKey {
        explicit SortKey(const ConnectionQuery& query);

        bool isSorted = false;
        std::size_t column = 0;
        std::size_t number = 0;
        std::uint64_t flip = 0;
    };

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

    SQLite::Database& m_Database;
    const std::size_t m_SortMemory;
    ConnectionSelection m_Selection;
};

}  // namespace service
