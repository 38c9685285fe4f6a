// SPDX-License-Identifier: GPL-3.0-or-later
#include "service/store/file/DamagedDatabase.h"

#include <algorithm>
#include <array>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <string_view>
#include <system_error>

#include "libs/sqlite/Database.h"
#include "libs/sqlite/Query.h"
#include "service/log/Log.h"

namespace service {

namespace {

constexpr char noteSuffix[] = ".damaged";

/** Name of a moment that sorts, in UTC. */
std::string nameOfNow() {
    const std::time_t now = std::time(nullptr);
    std::tm utc{};
    gmtime_r(&now, &utc);
    std::array<char, 32> text{};
    std::strftime(text.data(), text.size(), "%Y%m%dT%H%M%SZ", &utc);
    return text.data();
}

}  // namespace

void DamagedDatabase::note() const {
    std::ofstream(m_Path + noteSuffix, std::ios::app);
}

bool DamagedDatabase::isNoted() const {
    std::error_code ignored;
    return std::filesystem::exists(m_Path + noteSuffix, ignored);
}

void DamagedDatabase::removeNote() const {
    std::error_code ignored;
    std::filesystem::remove(m_Path + noteSuffix, ignored);
}

bool DamagedDatabase::isConfirmed() const {
    SQLite::Database database;
    if (!isOurs() || !database.Open(m_Path, SQLite::OpenMode::ReadWriteCreate)) {
        return false;
    }
    SQLite::Query check(database, "PRAGMA integrity_check(1)");
    if (check.Step() == SQLite::StepResult::Row) {
        return check.GetColumnAsString(0) != "ok";
    }
    return database.IsDamaged();
}

/** By the mark that every database of ours has at byte 68, or because it was opened before. */
bool DamagedDatabase::isOurs() const {
    std::array<char, 72> header{};
    std::ifstream(m_Path, std::ios::binary).read(header.data(), header.size());
    const std::string_view text(header.data(), header.size());
    return m_IsKnown || (text.starts_with("SQLite format 3") && text.substr(68) == "NvMt");
}

std::string DamagedDatabase::freeName() const {
    const std::string name = m_Path + ".damaged-" + nameOfNow();
    std::string free = name;
    std::error_code ignored;
    for (int number = 2; std::filesystem::exists(free, ignored); ++number) {
        free = name + "-" + std::to_string(number);
    }
    return free;
}

bool DamagedDatabase::setAside(std::string& error) const {
    const std::string name = freeName();
    // The file itself last: were we interrupted, a new one would be taken for the owner of what is left beside it.
    for (const char* suffix : {"-wal", "-shm", ""}) {
        std::error_code failure;
        std::filesystem::rename(m_Path + suffix, name + suffix, failure);
        if (failure && failure != std::errc::no_such_file_or_directory) {
            error = "it is damaged and cannot be renamed: " + failure.message();
            return false;
        }
    }
    logLine("store: the database is damaged; it is set aside as ", name, ", and a new history begins");
    return true;
}

}  // namespace service
