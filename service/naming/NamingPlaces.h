// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace service {

/** Where to look for what programs are called. */
struct NamingPlaces {
    std::vector<std::filesystem::path> entryFolders;     ///< of desktop entries; the earlier hide the later
    std::vector<std::filesystem::path> programFolders;   ///< where a command without a folder is looked for
    std::vector<std::filesystem::path> launcherFolders;  ///< those of them that are the system's
    std::vector<std::filesystem::path> packageFolders;   ///< where each application has a folder of its own
    std::vector<std::string> languages;                  ///< as `languagesOf` tells them
    std::filesystem::path processes = "/proc";
    std::filesystem::path root = "/";  ///< whose "var" tells what containers are called

    /**
     * As the environment says (XDG_DATA_HOME, XDG_DATA_DIRS, PATH, LC_ALL, LC_MESSAGES, LANG), and besides the
     * folders of the system, of Flatpak and Snap, and of everybody in /etc/passwd: the daemon counts for all
     * users but runs for one.
     */
    static NamingPlaces ofThisMachine();
};

}  // namespace service
