// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <sys/un.h>

#include <string>

#include "service/system/FileDescriptor.h"

namespace service {

/**
 * Where a daemon tells of itself: a local socket beside its history, named like that with ".status" behind.
 * Only who may enter the folder and owns the socket can ask.
 */
class StatusAddress {
  public:
    /** Check with `isValid` whether the folder is there and the file's name short enough; if not, errno tells. */
    explicit StatusAddress(const std::string& databasePath);

    bool isValid() const { return m_Folder.isValid(); }

    /**
     * For bind(2) and connect(2), as long as this exists: it goes by the open folder, since a path may be too
     * long.
     */
    const sockaddr_un& address() const { return m_Address; }

    /** Removes the socket, if there is one. */
    void unlink() const;

  private:
    FileDescriptor m_Folder;
    sockaddr_un m_Address{};
};

}  // namespace service
