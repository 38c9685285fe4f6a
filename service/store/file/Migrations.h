// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>

namespace SQLite {
class Database;
}

namespace service {

/**
 * Brings a database, also an empty new one, up to the tables that this program knows, in one transaction. False with
 * the reason in `error`, also for a database that a later program has written or another one altogether.
 */
bool migrate(SQLite::Database& database, std::string& error);

}  // namespace service
