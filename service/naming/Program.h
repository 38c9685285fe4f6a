// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <sys/types.h>

#include <cstdint>
#include <string>

namespace service {

/** A program as the kernel tells of it. */
struct Program {
    std::string path;      ///< of its file, seen from the root of its process: any bytes
    pid_t process = 0;     ///< one that runs it; it may have ended
    dev_t device = 0;      ///< of its file, as stat(2) tells it
    ino_t inode = 0;       ///< likewise
    bool isApart = false;  ///< the root of its process is not the machine's: a container, a sandbox
    std::uint32_t mountNamespace = 0;  ///< as /proc numbers it; needed only of those apart
};

}  // namespace service
