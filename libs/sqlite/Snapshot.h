// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "libs/sqlite/Database.h"

namespace SQLite {

/**
 * A read transaction: all queries in its scope see the database as it is at the first of them, whatever others commit
 * meanwhile. The database must outlive it. It does not nest, neither in itself nor in a `Transaction`.
 */
class Snapshot {
  public:
    explicit Snapshot(Database& database) : m_Database(database) { m_Database.Execute("BEGIN"); }
    ~Snapshot() { m_Database.Execute("COMMIT"); }

    Snapshot(const Snapshot&) = delete;
    Snapshot& operator=(const Snapshot&) = delete;

  private:
    Database& m_Database;
};

}  // namespace SQLite
