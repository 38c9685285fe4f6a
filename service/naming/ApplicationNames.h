// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <chrono>
#include <memory>
#include <string>
#include <unordered_map>

#include "service/naming/DesktopNames.h"
#include "service/naming/NamingPlaces.h"
#include "service/naming/Program.h"
#include "service/naming/ProgramFinder.h"
#include "service/traffic/ApplicationIdentity.h"

namespace service {

/**
 * Tells which application a program is, and what a person calls it. One thread at a time.
 *
 * The name is that of the desktop entry that owns the executable, else the file's name; so an interpreter is
 * an interpreter, whatever it runs. What runs in a container is named with that: "nginx (web)".
 */
class ApplicationNames {
  public:
    explicit ApplicationNames(NamingPlaces places = NamingPlaces::ofThisMachine());

    /** Where the program's file is: UTF-8, and as `ProgramFinder` writes it. Ask while its process lives. */
    std::string find(const Program& program);

    /** The application whose executable `find` found. One object per application while no desktop entry changes. */
    std::shared_ptr<const ApplicationIdentity> applicationAt(const std::string& path);

  private:
    std::string nameOf(const std::string& path) const;
    void refreshWhenDue();

    ProgramFinder m_Finder;
    DesktopNames m_DesktopNames;
    std::chrono::steady_clock::time_point m_NextRefresh;
    std::unordered_map<std::string, std::shared_ptr<const ApplicationIdentity>> m_Known;  ///< by `path`
};

}  // namespace service
