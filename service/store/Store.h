// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <memory>
#include <string>

#include "service/ledger/Records.h"

namespace service {

/** The history on disk, written by one thread. SQLite in WAL mode: readers have connections of their own. */
class Store {
  public:
    /** Opens or makes the database, bringing an older one up to date. Null with the reason in `error`. */
    static std::unique_ptr<Store> open(const std::string& path, std::string& error);

    /** What the last run left; for a new database an empty state that starts at `now`. */
    LedgerState load(Moment now);

    /** Appends one second's changes in one transaction. False when the disk would not take them: nothing is
     * written. */
    bool append(const LedgerChanges& changes);
};

}  // namespace service
