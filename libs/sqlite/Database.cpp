// SPDX-License-Identifier: GPL-3.0-or-later
#include "libs/sqlite/Database.h"

#include <sqlite3.h>

#include <system_error>

namespace SQLite {

namespace {

void callBlobFunction(sqlite3_context* context, int, sqlite3_value** arguments) {
    const auto function = reinterpret_cast<Database::BlobFunction>(sqlite3_user_data(context));
    const auto* bytes = static_cast<const std::uint8_t*>(sqlite3_value_blob(arguments[0]));
    const auto size = static_cast<std::size_t>(sqlite3_value_bytes(arguments[0]));
    const Database::Value value = function({bytes, size});
    if (const auto* text = std::get_if<std::string>(&value)) {
        sqlite3_result_text(context, text->data(), static_cast<int>(text->size()), SQLITE_TRANSIENT);
    } else {
        sqlite3_result_int64(context, std::get<std::int64_t>(value));
    }
}

}  // namespace

Database::~Database() {
    Close();
}

bool Database::Open(const std::string& path, OpenMode mode) {
    Close();
    const int access =
        mode == OpenMode::ReadOnly ? SQLITE_OPEN_READONLY : SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE;
    if (sqlite3_open_v2(path.c_str(), &m_Handle, access | SQLITE_OPEN_NOMUTEX, nullptr) != SQLITE_OK) {
        m_OpenError = sqlite3_errmsg(m_Handle);
        if (const int code = sqlite3_system_errno(m_Handle); code != 0) {
            m_OpenError += ": " + std::generic_category().message(code);
        }
        Close();
        return false;
    }
    const char* resolved = sqlite3_db_filename(m_Handle, "main");
    m_Path = resolved != nullptr ? resolved : "";
    sqlite3_extended_result_codes(m_Handle, 1);
    SetBusyTimeout(defaultBusyTimeout);
    return true;
}

void Database::Close() {
    // The second form also copes with a query that lives longer than it should: it closes with the last of
    // them.
    sqlite3_close_v2(m_Handle);
    m_Handle = nullptr;
}

void Database::SetBusyTimeout(std::chrono::milliseconds timeout) {
    sqlite3_busy_timeout(m_Handle, static_cast<int>(timeout.count()));
}

bool Database::Execute(const std::string& sql) {
    return IsOpen() && sqlite3_exec(m_Handle, sql.c_str(), nullptr, nullptr, nullptr) == SQLITE_OK;
}

bool Database::AddFunction(const std::string& name, BlobFunction function) {
    return IsOpen() && sqlite3_create_function(m_Handle, name.c_str(), 1, SQLITE_UTF8 | SQLITE_DETERMINISTIC,
                                               reinterpret_cast<void*>(function), callBlobFunction, nullptr,
                                               nullptr) == SQLITE_OK;
}

int Database::GetChangeCount() const {
    return IsOpen() ? sqlite3_changes(m_Handle) : 0;
}

std::string Database::GetLastError() const {
    return IsOpen() ? sqlite3_errmsg(m_Handle) : m_OpenError;
}

bool Database::IsDamaged() const {
    const int code = IsOpen() ? sqlite3_errcode(m_Handle) & 0xff : SQLITE_OK;
    return code == SQLITE_CORRUPT || code == SQLITE_NOTADB;
}

}  // namespace SQLite
