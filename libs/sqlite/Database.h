// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <chrono>
#include <cstdint>
#include <span>
#include <string>
#include <variant>

struct sqlite3;

namespace SQLite {

enum class OpenMode { ReadOnly, ReadWriteCreate };

/**
 * A connection to one SQLite 3 database file; closed by the destructor.
 *
 * One thread at a time may use it together with its queries and transactions, all of which it must outlive.
 * Nothing here throws: what fails returns false and leaves its reason in `GetLastError`.
 */
class Database {
  public:
    /** What a function in SQL may give back. */
    using Value = std::variant<std::int64_t, std::string>;

    /** A function of a blob (a NULL arrives as an empty one) that depends on nothing else and never throws.
     */
    using BlobFunction = Value (*)(std::span<const std::uint8_t>);

    static constexpr std::chrono::milliseconds defaultBusyTimeout{5000};

    Database() = default;
    ~Database();

    Database(const Database&) = delete;
    Database& operator=(const Database&) = delete;

    /** Opens `path` (":memory:" for a private one in memory), closing what was open before. */
    bool Open(const std::string& path, OpenMode mode);
    void Close();
    bool IsOpen() const { return m_Handle != nullptr; }

    /** How long a statement waits for another connection's lock before it fails. */
    void SetBusyTimeout(std::chrono::milliseconds timeout);

    /** Runs any number of statements that give no rows of interest. Stops at the first that fails. */
    bool Execute(const std::string& sql);

    /** Lets SQL call `function` as `name(blob)`. */
    bool AddFunction(const std::string& name, BlobFunction function);

    /** Rows that the last insert, update or delete has touched. */
    int GetChangeCount() const;

    /** Absolute path of the file that is open, symbolic links resolved. */
    std::string GetPath() const { return m_Path; }

    /** What went wrong last, in SQLite's words. */
    std::string GetLastError() const;

    /** Whether what went wrong last is that the file is damaged, or no database at all. */
    bool IsDamaged() const;

    /** SQLite's own handle, owned by this object; null when closed. */
    sqlite3* GetHandle() const { return m_Handle; }

  private:
    sqlite3* m_Handle = nullptr;
    std::string m_Path;
    std::string m_OpenError;  ///< why the last `Open` failed
};

}  // namespace SQLite
