// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>

namespace service {

/** Holds a lock file against other processes; released by the destructor and by the end of the process. */
class FileLock {
  public:
    /** Makes the file if need be. Does not wait for another holder. */
    explicit FileLock(const std::string& path);
    ~FileLock();

    FileLock(const FileLock&) = delete;
    FileLock& operator=(const FileLock&) = delete;

    bool isHeld() const { return m_Error.empty(); }

    /** Whether the file was not there before. */
    bool isNew() const { return m_IsNew; }

    /** Leaves no trace of a lock that nobody has held before. */
    void removeIfNew() const;

    /** Why the lock is not held; empty when it is. */
    const std::string& error() const { return m_Error; }

  private:
    std::string m_Path;
    bool m_IsNew;
    int m_Descriptor;
    std::string m_Error;
};

}  // namespace service
