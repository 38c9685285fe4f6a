// SPDX-License-Identifier: GPL-3.0-or-later
#include "libs/sqlite/Transaction.h"

#include "libs/sqlite/Database.h"

namespace SQLite {

Transaction::Transaction(Database& database)
    : m_Database(database), m_Active(database.Execute("BEGIN IMMEDIATE")) {}

Transaction::~Transaction() {
    if (m_Active) {
        // Fails only where SQLite has rolled back by itself, which comes to the same.
        m_Database.Execute("ROLLBACK");
    }
}

bool Transaction::Commit() {
    if (!m_Active || !m_Database.Execute("COMMIT")) {
        return false;
    }
    m_Active = false;
    return true;
}

}  // namespace SQLite
