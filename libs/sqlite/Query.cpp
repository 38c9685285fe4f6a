// SPDX-License-Identifier: GPL-3.0-or-later
#include "libs/sqlite/Query.h"

#include <sqlite3.h>

#include "libs/sqlite/Database.h"

namespace SQLite {

Query::Query(Database& database, std::string_view sql) : m_Database(database) {
    if (!database.IsOpen()) {
        m_PrepareError = "the database is not open";
        return;
    }
    if (sqlite3_prepare_v2(database.GetHandle(), sql.data(), static_cast<int>(sql.size()), &m_Statement,
                           nullptr) != SQLITE_OK) {
        m_PrepareError = database.GetLastError();
    } else if (m_Statement == nullptr) {
        m_PrepareError = "there is no statement in the text";
    }
}

Query::~Query() {
    sqlite3_finalize(m_Statement);
}

// SQLite refuses a null statement in every function below, so an invalid query needs no check of its own.

bool Query::Bind(int index, std::int64_t value) {
    return sqlite3_bind_int64(m_Statement, index, value) == SQLITE_OK;
}

bool Query::Bind(int index, std::string_view text) {
    // A null pointer would bind NULL; an empty text stays a text.
    const char* data = text.empty() ? "" : text.data();
    return sqlite3_bind_text64(m_Statement, index, data, text.size(), SQLITE_TRANSIENT, SQLITE_UTF8) ==
           SQLITE_OK;
}

bool Query::Bind(int index, std::span<const std::uint8_t> blob) {
    if (blob.empty()) {
        return sqlite3_bind_zeroblob(m_Statement, index, 0) == SQLITE_OK;
    }
    return sqlite3_bind_blob64(m_Statement, index, blob.data(), blob.size(), SQLITE_TRANSIENT) == SQLITE_OK;
}

StepResult Query::Step() {
    if (!IsValid()) {
        return StepResult::Failed;
    }
    switch (sqlite3_step(m_Statement)) {
        case SQLITE_ROW:
            return StepResult::Row;
        case SQLITE_DONE:
            return StepResult::Done;
        default:
            return StepResult::Failed;
    }
}

void Query::Reset() {
    sqlite3_reset(m_Statement);
}

bool Query::RunToEnd() {
    StepResult result = Step();
    while (result == StepResult::Row) {
        result = Step();
    }
    // A reset repeats the failure of the last step, so the database's last error is still this one.
    Reset();
    return result == StepResult::Done;
}

int Query::GetColumnAsInt(int column) const {
    return sqlite3_column_int(m_Statement, column);
}

std::int64_t Query::GetColumnAsInt64(int column) const {
    return sqlite3_column_int64(m_Statement, column);
}

std::string Query::GetColumnAsString(int column) const {
    // The text has to be asked for before its length: asking may convert it.
    const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(m_Statement, column));
    const auto size = static_cast<std::size_t>(sqlite3_column_bytes(m_Statement, column));
    return text != nullptr ? std::string(text, size) : std::string();
}

std::vector<std::uint8_t> Query::GetColumnAsBlob(int column) const {
    const std::span<const std::uint8_t> bytes = GetColumnBytes(column);
    return {bytes.begin(), bytes.end()};
}

std::span<const std::uint8_t> Query::GetColumnBytes(int column) const {
    const auto* bytes = static_cast<const std::uint8_t*>(sqlite3_column_blob(m_Statement, column));
    const auto size = static_cast<std::size_t>(sqlite3_column_bytes(m_Statement, column));
    return bytes != nullptr ? std::span(bytes, size) : std::span<const std::uint8_t>();
}

std::string Query::GetLastError() const {
    return IsValid() ? m_Database.GetLastError() : m_PrepareError;
}

}  // namespace SQLite
