// SPDX-License-Identifier: GPL-3.0-or-later
#include "service/store/file/DatabaseFile.h"

#include <chrono>

#include "libs/sqlite/Query.h"
#include "service/log/Log.h"
#include "service/store/file/Migrations.h"

namespace service {

namespace {

/**
 * With WAL and NORMAL a crash of the daemon loses nothing and a loss of power the last moments at most; the
 * limit gives the log's space back after a burst. Debian builds SQLite so that it overwrites with zeros what
 * is deleted: a wipe would write the whole database into the log once, only for the `VACUUM` after it to leave
 * those pages behind anyway, and would want that much room on a disk that may be full.
 */
constexpr char settings[] =
    "PRAGMA journal_mode = WAL;"
    "PRAGMA synchronous = NORMAL;"
    "PRAGMA secure_delete = OFF;"
    "PRAGMA journal_size_limit = 8388608;";

/**
 * A database of before files could shrink is laid out anew, once, before anybody uses it, as `migrate` asks for: that
 * takes as much room again and about a second for 100 MB. Where it fails the history goes on, and free pages wait for
 * new rows.
 */
void letFileShrink(SQLite::Database& database) {
    SQLite::Query canShrink(database, "SELECT auto_vacuum = 2 FROM pragma_auto_vacuum");
    const bool isLaidOut = canShrink.Step() == SQLite::StepResult::Row && canShrink.GetColumnAsInt(0) != 0;
    canShrink.Reset();
    if (!isLaidOut && !database.Execute("VACUUM; PRAGMA wal_checkpoint(TRUNCATE);")) {
        logLine("store: the file can grow only, until the next start: ", database.GetLastError());
    }
}

}  // namespace

std::filesystem::path DatabaseFile::realPath(const std::string& path, std::error_code& failure) {
    std::filesystem::path resolved = std::filesystem::weakly_canonical(path, failure);
    while (!failure && std::filesystem::is_symlink(resolved)) {
        const auto target = resolved.parent_path() / std::filesystem::read_symlink(resolved, failure);
        resolved = std::filesystem::weakly_canonical(target, failure);
    }
    return resolved;
}

std::unique_ptr<SQLite::Database> DatabaseFile::open(const std::string& path, std::string& error) {
    auto database = std::make_unique<SQLite::Database>();
    if (!database->Open(path, SQLite::OpenMode::ReadWriteCreate)) {
        error = database->GetLastError();
        return nullptr;
    }
    if (!migrate(*database, error)) {
        return nullptr;
    }
    if (!database->Execute(settings)) {  // one of them alters the file, which has to be ours for that
        error = database->GetLastError();
        return nullptr;
    }
    letFileShrink(*database);
    return database;
}

bool DatabaseFile::compact(SQLite::Database& database) {
    return database.Execute("VACUUM");
}

bool DatabaseFile::cutLog(SQLite::Database& database) {
    database.SetBusyTimeout(std::chrono::milliseconds(0));
    SQLite::Query cut(database, "PRAGMA wal_checkpoint(TRUNCATE)");
    const bool isCut = cut.Step() == SQLite::StepResult::Row && cut.GetColumnAsInt(0) == 0;
    database.SetBusyTimeout(SQLite::Database::defaultBusyTimeout);
    return isCut;
}

}  // namespace service
