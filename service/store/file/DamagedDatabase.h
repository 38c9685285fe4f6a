// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>

namespace service {

/** A database file that may be damaged, and what becomes of it. Whoever calls this holds its lock. */
class DamagedDatabase {
  public:
    /** @param isKnown whether this program has had the file open before */
    DamagedDatabase(std::string path, bool isKnown) : m_Path(std::move(path)), m_IsKnown(isKnown) {}

    /** Leaves a note beside the database for the next start: it was found damaged while it was in use. */
    void note() const;

    bool isNoted() const;
    void removeNote() const;

    /**
     * Whether the file is ours and SQLite finds it damaged; reads all of it. A file that is no database at all is ours
     * only when it is known: anything may be named on a command line.
     */
    bool isConfirmed() const;

    /**
     * Renames the file, together with what SQLite keeps beside it, to a name of this moment that is not taken, and
     * tells that in the log. False with the reason in `error`.
     */
    bool setAside(std::string& error) const;

  private:
    bool isOurs() const;
    std::string freeName() const;

    std::string m_Path;
    bool m_IsKnown;
};

}  // namespace service
