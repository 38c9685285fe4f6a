// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

namespace SQLite {

class Database;

/**
 * A write transaction that takes the write lock at once and is rolled back at the end of its scope, unless it
 * was committed. The database must outlive it. Transactions do not nest.
 */
class Transaction {
  public:
    explicit Transaction(Database& database);
    ~Transaction();

    Transaction(const Transaction&) = delete;
    Transaction& operator=(const Transaction&) = delete;

    /** False when it could not begin (the reason is in the database's `GetLastError`), or has ended. */
    bool IsActive() const { return m_Active; }

    /** False, with the reason in the database's `GetLastError`, when nothing was made durable. */
    bool Commit();

  private:
    Database& m_Database;
    bool m_Active;
};

}  // namespace SQLite
