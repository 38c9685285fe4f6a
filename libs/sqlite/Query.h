// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

struct sqlite3_stmt;

namespace SQLite {

class Database;

/** What a step of a query came to. */
enum class StepResult {
    Row,     ///< the query stands on a row, whose columns can be read
    Done,    ///< there are no more rows
    Failed,  ///< the reason is in the query's `GetLastError`
};

/**
 * A prepared statement: bind its parameters, step through its rows, read their columns, reset, begin again.
 *
 * A query that could not be prepared can be used all the same: every bind and step of it fails. Parameters
 * count from 1, as `?1` does in SQL; columns count from 0. For the thread of its database, which must outlive
 * it.
 */
class Query {
  public:
    Query(Database& database, std::string_view sql);
    ~Query();

    Query(const Query&) = delete;
    Query& operator=(const Query&) = delete;

    bool IsValid() const { return m_Statement != nullptr; }

    bool Bind(int index, std::int64_t value);
    bool Bind(int index, std::string_view text);               ///< copied
    bool Bind(int index, std::span<const std::uint8_t> blob);  ///< copied

    /** Begins again with these values for the parameters 1, 2, ... */
    template <class... Values>
    bool BindAll(const Values&... values) {
        Reset();
        int index = 0;
        return (... && Bind(++index, values));
    }

    StepResult Step();

    /** Before the first row again; the bound values stay. Ends the read transaction that a half-read query
     * holds. */
    void Reset();

    /** Binds the values, runs to the end without looking at rows, resets. */
    template <class... Values>
    bool Execute(const Values&... values) {
        return BindAll(values...) && RunToEnd();
    }

    /** Columns of the current row; a NULL reads as 0 or empty, other kinds are converted as SQLite does. */
    int GetColumnAsInt(int column) const;
    std::int64_t GetColumnAsInt64(int column) const;
    std::string GetColumnAsString(int column) const;
    std::vector<std::uint8_t> GetColumnAsBlob(int column) const;

    /** A blob where it lies: SQLite's own bytes, valid until the next step or reset. */
    std::span<const std::uint8_t> GetColumnBytes(int column) const;

    /** What went wrong last, in SQLite's words. */
    std::string GetLastError() const;

  private:
    bool RunToEnd();

    Database& m_Database;
    sqlite3_stmt* m_Statement = nullptr;
    std::string m_PrepareError;  ///< why there is no statement
};

}  // namespace SQLite
