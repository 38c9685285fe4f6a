// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "libs/sqlite/Database.h"

namespace service {

/**
 * Looks for what a history must never have: damaged pages, series that sink, and sums over the applications that are
 * not those of all. Reads the whole database through a connection of its own, also beside the daemon that writes it.
 */
class HistoryAudit {
  public:
    /** Null with the reason in `error` when the database cannot be opened. */
    static std::unique_ptr<HistoryAudit> open(const std::string& path, std::string& error);

    HistoryAudit(const HistoryAudit&) = delete;
    HistoryAudit& operator=(const HistoryAudit&) = delete;

    /** SQLite's own check of all pages and indexes: about a second for 100 MB. False with the first `finding`. */
    bool checkPages();

    /**
     * At each moment at which totals are known: about a second for a million rows of the series. False with the first
     * `finding`, or why the rows cannot be read.
     */
    bool checkSums();

    const std::string& finding() const { return m_Finding; }

    /** At how many moments the last `checkSums` has compared. */
    std::int64_t momentCount() const { return m_MomentCount; }

  private:
    HistoryAudit() = default;

    bool fail(std::string finding);
    bool compareRows();

    SQLite::Database m_Database;
    std::string m_Finding;
    std::int64_t m_MomentCount = 0;
};

}  // namespace service
