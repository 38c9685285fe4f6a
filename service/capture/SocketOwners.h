// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "service/naming/ApplicationNames.h"
#include "service/traffic/ApplicationIdentity.h"

namespace service {

/**
 * Finds the applications that hold sockets, by the file descriptors that processes show under /proc.
 *
 * Without privileges only the user's own processes show theirs. One thread at a time.
 */
class SocketOwners {
  public:
    using Inodes = std::unordered_set<std::uint32_t>;
    using Owners = std::unordered_map<std::uint32_t, std::shared_ptr<const ApplicationIdentity>>;

    /**
     * The owners of those of the sockets whose process can be seen. Of several processes that share a socket
     * one that was found lately owns it, else the one with the lowest id.
     *
     * Looks first into the processes found lately, because whoever opened a connection opens another. For a
     * socket that none of them has it looks at every descriptor of every process, some 3 us each: ask for new
     * sockets only.
     */
    Owners find(const Inodes& inodes);

  private:
    /** Adds the sockets that a process has to `owners`. */
    void searchProcess(const std::string& processFolder, const Inodes& inodes, Owners& owners);
    void rememberProcess(const std::string& processFolder);

    /** The application that runs in a process; null when its executable is not to be seen or it has ended. */
    std::shared_ptr<const ApplicationIdentity> applicationOf(const std::string& processFolder);

    ApplicationNames m_Names;

    std::vector<std::string> m_RecentProcesses;  ///< folders of processes found lately, the latest first
};

}  // namespace service
