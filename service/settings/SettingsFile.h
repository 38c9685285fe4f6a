// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>

#include "service/settings/Settings.h"

namespace service {

/** The settings file of the whole system, which the window writes. */
std::string defaultSettingsFile();

/** Reads a settings file, and logs what is in force when that is news. One thread at a time. */
class SettingsFile {
  public:
    explicit SettingsFile(std::string path);

    /**
     * What the file holds, with the default for each value that is absent or of a wrong type; the defaults when
     * there is no such file. When there is one that cannot be read or is no dictionary, what was in force
     * before; at first that is the defaults, but for the history, of which nothing is dropped as long as nobody knows
     * the wish.
     */
    const Settings& read();

    /** What the latest reading gave. */
    const Settings& inForce() const { return m_InForce; }

  private:
    /** What the log is to say of the file, before what is in force. */
    std::string readInto(Settings& settings) const;
    void say(const std::string& text);

    const std::string m_Path;
    Settings m_InForce = {.months = 0, .mode = config::defaultAllowDenyAppsMode, .listed = {}};
    std::string m_Said;  ///< the latest log line
};

}  // namespace service
