// SPDX-License-Identifier: GPL-3.0-or-later
#include "service/naming/NamingPlaces.h"

#include <pwd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <sstream>

#include "service/naming/DesktopEntry.h"

namespace service {

namespace {

using Folders = std::vector<std::filesystem::path>;

std::string variable(const char* name) {
    const char* const value = std::getenv(name);
    return value == nullptr ? "" : value;
}

/** Appends a folder unless it is there already. */
void add(Folders& folders, const std::filesystem::path& folder) {
    if (folder.is_absolute() && std::ranges::find(folders, folder) == folders.end()) {
        folders.push_back(folder);
    }
}

void addList(Folders& folders, const std::string& list, const std::filesystem::path& subfolder) {
    std::istringstream stream(list);
    for (std::string folder; std::getline(stream, folder, ':');) {
        add(folders, subfolder.empty() ? std::filesystem::path(folder) : folder / subfolder);
    }
}

/** Those of everybody whom the machine itself knows: a directory of users elsewhere may be endless. */
Folders homeFolders() {
    Folders homes;
    add(homes, variable("HOME"));
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> users(std::fopen("/etc/passwd", "re"), std::fclose);
    while (const passwd* const user = users ? ::fgetpwent(users.get()) : nullptr) {
        add(homes, user->pw_dir);
    }
    return homes;
}

std::string localeOfMessages() {
    for (const char* const name : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
        if (const std::string locale = variable(name); !locale.empty()) {
            return locale;
        }
    }
    return "";
}

}  // namespace

NamingPlaces NamingPlaces::ofThisMachine() {
    NamingPlaces places;
    addList(places.entryFolders, variable("XDG_DATA_HOME"), "applications");
    addList(places.programFolders, variable("PATH"), "");
    for (const std::filesystem::path& home : homeFolders()) {
        add(places.entryFolders, home / ".local/share/applications");
        add(places.entryFolders, home / ".local/share/flatpak/exports/share/applications");
        add(places.programFolders, home / ".local/bin");
    }
    addList(places.entryFolders, variable("XDG_DATA_DIRS"), "applications");
    for (const char* const data : {"/usr/local/share", "/usr/share", "/var/lib/flatpak/exports/share"}) {
        add(places.entryFolders, std::filesystem::path(data) / "applications");
    }
    add(places.entryFolders, "/var/lib/snapd/desktop/applications");
    for (const char* const programs :
         {"/usr/local/bin", "/usr/bin", "/bin", "/usr/local/sbin", "/usr/sbin", "/sbin", "/usr/games"}) {
        add(places.programFolders, programs);
        add(places.launcherFolders, programs);
    }
    addList(places.packageFolders,
            "/usr/lib:/usr/lib64:/usr/libexec:/usr/share:/usr/local/lib:/usr/local/share:/opt", "");
    places.languages = languagesOf(localeOfMessages());
    return places;
}

}  // namespace service
