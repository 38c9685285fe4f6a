// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <filesystem>
#include <map>
#include <set>
#include <string>
#include <unordered_map>
#include <vector>

#include "service/naming/DesktopEntry.h"
#include "service/naming/NamingPlaces.h"

namespace service {

/**
 * What the desktop calls the programs: an index of its entries. One thread at a time.
 *
 * An entry that starts another program ("python3 tool.py", "sh -c ...") names neither of the two.
 */
class DesktopNames {
  public:
    /** Reads all entries in `places`: 5 ms with 200 of them. */
    explicit DesktopNames(NamingPlaces places);

    /**
     * The name that an entry gives to the executable at `path`: one that starts this file, or another of its
     * folder when that is an application's own (/opt/browser, not /usr/bin and not a user's Downloads). A
     * script among the system's programs is taken to start the file of its name in the folder of its name
     * (/usr/bin/browser that of /usr/lib/browser/browser). For a program of a Flatpak or Snap, whose files
     * `path` shows, the package's own. Empty when there is none.
     */
    std::string nameOf(const std::filesystem::path& path) const;

    /**
     * Reads the entries anew if any of the folders has changed; whether it has. An entry that was overwritten
     * in place is not noticed: package managers and desktops replace the file. A few microseconds.
     */
    bool refresh();

  private:
    struct Claim {
        std::string name;
        int rank = 0;  ///< the lowest one counts, of equal ones the first
    };
    using FolderTimes = std::map<std::filesystem::path, std::filesystem::file_time_type>;

    FolderTimes folderTimes() const;
    void readEntries();
    void readFolder(const std::filesystem::path& folder, std::set<std::filesystem::path>& seen);
    void enter(const DesktopEntry& entry, bool isMain);
    bool isStarted(const std::filesystem::path& program, const std::vector<std::string>& command) const;
    void enterProgram(const std::string& name, const std::filesystem::path& program, int rank);
    void enterFile(const std::string& name, const std::filesystem::path& file, int rank);
    void claim(const std::string& key, const Claim& claim);

    /** The file that a command's first word means; empty when there is none. */
    std::filesystem::path findProgram(const std::filesystem::path& program) const;

    const NamingPlaces m_Places;
    FolderTimes m_FolderTimes;  ///< of the entries' folders and of those below, when they were read
    std::unordered_map<std::string, Claim> m_Claims;  ///< by a key that tells what is claimed, see the source
};

}  // namespace service
