// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <filesystem>
#include <memory>
#include <string>
#include <system_error>

#include "libs/sqlite/Database.h"

namespace service {

/** The history's database as a file: how it is named, laid out and kept small. For the thread that writes it. */
class DatabaseFile {
  public:
    DatabaseFile() = delete;

    /**
     * Where `path` leads, also by a link to a file that is yet to be made: all who name the file in some way are to
     * meet at one lock.
     */
    static std::filesystem::path realPath(const std::string& path, std::error_code& failure);

    /** Opens or makes it with the tables that this program knows. Null with the reason in `error`. */
    static std::unique_ptr<SQLite::Database> open(const std::string& path, std::string& error);

    /** Writes it anew, as small as it can be, into the log: see `cutLog`. */
    static bool compact(SQLite::Database& database);

    /** Cuts the file and its log to what they hold. Waits for nobody: false where a reader is in the way. */
    static bool cutLog(SQLite::Database& database);
};

}  // namespace service
