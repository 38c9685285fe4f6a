// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <sys/types.h>

#include <chrono>
#include <memory>
#include <string>
#include <unordered_map>

#include "service/naming/DesktopNames.h"
#include "service/naming/NamingPlaces.h"
#include "service/traffic/ApplicationIdentity.h"

namespace service {

/**
 * Tells which application a program is, and what a person calls it. One thread at a time.
 *
 * The name is that of the desktop entry that owns the executable, else the file's name; so an interpreter is
 * an interpreter, whatever it runs. A container's program is named as if it were the machine's own. The
 * packages that carry a version in their paths lose it ("/snap/mail/current/...", ".../stable/active/...")
 * lest an update make another application of a program.
 */
class ApplicationNames {
  public:
    explicit ApplicationNames(NamingPlaces places = NamingPlaces::ofThisMachine());

    /**
     * The application whose executable is at `path`, as the kernel tells it: any bytes, seen from the root of the
     * process. One object per application while nothing on the desktop changes.
     *
     * @param process that runs it and tells of its sandbox; it may have ended, then a Flatpak's program keeps
     *   its path inside ("/app/bin/mail")
     */
    std::shared_ptr<const ApplicationIdentity> identify(const std::string& path, pid_t process);

  private:
    std::string pathOnMachine(const std::string& path, pid_t process) const;
    std::string flatpakFile(const std::string& path, pid_t process) const;
    void refreshWhenDue();

    const std::filesystem::path m_Processes;
    DesktopNames m_DesktopNames;
    std::chrono::steady_clock::time_point m_NextRefresh;
    std::unordered_map<std::string, std::shared_ptr<const ApplicationIdentity>> m_Known;  ///< by `path`
};

}  // namespace service
