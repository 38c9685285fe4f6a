// SPDX-License-Identifier: GPL-3.0-or-later
#include "service/naming/DesktopNames.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <optional>
#include <string_view>
#include <system_error>
#include <utility>

namespace service {

namespace {

namespace fs = std::filesystem;

// Ranks: what an entry starts by options ("office --writer") is less the program's own name than what it starts
// without, and what a link leads to (/usr/bin/vim, /etc/alternatives) less than what is named.
constexpr int rankOfOptions = 2;
constexpr int rankOfLinks = 1;

std::string fileKey(const fs::path& file) {
    return file.string();
}

std::string folderKey(const fs::path& folder) {
    return "folder " + folder.string();
}

std::string flatpakKey(const std::string& id) {
    return "flatpak " + id;
}

std::string snapKey(const std::string& name) {
    return "snap " + name;
}

/** Whether a program is there to run others, whatever version stands behind its name. */
bool isInterpreter(const fs::path& program) {
    constexpr std::array<std::string_view, 33> names{
        "awk",   "bash",    "busybox", "dash",   "deno",  "electron", "env",  "fish", "flatpak",
        "gjs",   "guile",   "java",    "julia",  "ksh",   "lua",      "mono", "node", "nodejs",
        "perl",  "php",     "pkexec",  "python", "qml",   "ruby",     "sh",   "snap", "sudo",
        "tclsh", "toolbox", "wine",    "wish",   "xterm", "zsh"};
    const std::string name = program.filename();
    const std::size_t end = name.find_last_not_of("0123456789.");
    return std::ranges::find(names, std::string_view(name).substr(0, end + 1)) != names.end();
}

/** Whether nothing but files to open follows the program. */
bool isPlain(const std::vector<std::string>& words) {
    return words.size() == 1 || words[1].starts_with('%');
}

/**
 * True for "python3 -u tool.py", "flatpak run ...", "terminal -e tool": the entry is not the first word's own.
 */
bool startsAnotherProgram(const std::vector<std::string>& words) {
    return !isPlain(words) && (isInterpreter(words.front()) || !words[1].starts_with('-') ||
                               std::ranges::find(words, "-e") != words.end());
}

/** A folder where programs of many applications lie, such as /usr/bin, /usr/libexec, /usr/lib/x86_64-linux-gnu. */
bool isShared(const fs::path& folder) {
    constexpr std::array<std::string_view, 7> names{"bin", "sbin", "games", "lib", "lib64", "libexec", ""};
    const std::string name = folder.filename();
    return std::find(names.begin(), names.end(), name) != names.end() || name.ends_with("-linux-gnu");
}

/** Whether a folder is one of `packageFolders` or below. */
bool isBelow(const fs::path& folder, const std::vector<fs::path>& packageFolders) {
    return std::ranges::any_of(packageFolders, [&folder](const fs::path& packages) {
        return folder.string().starts_with(packages.string() + "/");
    });
}

/** The part of a path behind a first occurrence of `folder`; empty when it does not occur. */
std::string partBehind(const std::string& path, std::string_view folder) {
    const std::size_t found = path.find(folder);
    if (found == std::string::npos) {
        return "";
    }
    const std::size_t begin = found + folder.size();
    return path.substr(begin, path.find('/', begin) - begin);
}

/** The key of the package whose file this is, "" for a file of the system. */
std::string packageKey(const std::string& path) {
    for (const std::string_view flatpaks : {"/var/lib/flatpak/app/", "/.local/share/flatpak/app/"}) {
        if (const std::string flatpak = partBehind(path, flatpaks); !flatpak.empty()) {
            return flatpakKey(flatpak);
        }
    }
    const bool isSnap = path.starts_with("/snap/") || path.starts_with("/var/lib/snapd/snap/");
    return isSnap ? snapKey(partBehind(path, "/snap/")) : "";
}

}  // namespace

DesktopNames::DesktopNames(NamingPlaces places) : m_Places(std::move(places)) {
    refresh();
}

std::string DesktopNames::nameOf(const fs::path& path) const {
    const auto find = [this](const std::string& key) {
        const auto found = m_Claims.find(key);
        return found == m_Claims.end() ? "" : found->second.name;
    };
    if (const std::string package = packageKey(path.string()); !package.empty()) {
        return find(package);
    }
    const std::string name = find(fileKey(path));
    return name.empty() ? find(folderKey(path.parent_path())) : name;
}

bool DesktopNames::refresh() {
    FolderTimes times = folderTimes();
    if (times == m_FolderTimes) {
        return false;
    }
    m_FolderTimes = std::move(times);
    m_Claims.clear();
    readEntries();
    return true;
}

DesktopNames::FolderTimes DesktopNames::folderTimes() const {
    FolderTimes times;
    for (const fs::path& folder : m_Places.entryFolders) {
        std::error_code none;
        times[folder] = fs::last_write_time(folder, none);  // the least time of all where there is no folder
    }
    for (const auto& [folder, time] : m_FolderTimes) {
        std::error_code none;
        times.try_emplace(folder, fs::last_write_time(folder, none));
    }
    return times;
}

void DesktopNames::readEntries() {
    std::set<fs::path> seen;
    for (const fs::path& folder : m_Places.entryFolders) {
        readFolder(folder, seen);
    }
}

/** @param seen entries, by their path below their folder, that hide those of later folders */
void DesktopNames::readFolder(const fs::path& folder, std::set<fs::path>& seen) {
    std::error_code failure;
    std::vector<fs::path> files;
    for (fs::recursive_directory_iterator entry(folder, failure), end; entry != end;
         entry.increment(failure)) {
        std::error_code none;
        if (entry->is_directory(none)) {
            m_FolderTimes.try_emplace(entry->path(), entry->last_write_time(none));
        } else if (entry->path().extension() == ".desktop") {
            files.push_back(entry->path());
        }
    }
    std::ranges::sort(files);  // the same winner whatever order the file system likes
    for (const fs::path& file : files) {
        if (!seen.insert(file.lexically_relative(folder)).second) {
            continue;
        }
        if (const auto entry = DesktopEntry::read(file, m_Places.languages)) {
            enter(*entry, file.stem() == entry->flatpak || file.stem() == entry->snap + "_" + entry->snap);
        }
    }
}

/** @param isMain it is the entry of a package that the package is named for */
void DesktopNames::enter(const DesktopEntry& entry, bool isMain) {
    if (!entry.flatpak.empty() || !entry.snap.empty()) {
        const std::string key = entry.snap.empty() ? flatpakKey(entry.flatpak) : snapKey(entry.snap);
        return claim(key, {entry.name, isMain ? 0 : 1});
    }
    if (!entry.tryProgram.empty()) {
        if (findProgram(entry.tryProgram).empty()) {
            return;  // an entry whose program is not installed
        }
        if (!isInterpreter(entry.tryProgram) && !isStarted(entry.tryProgram, entry.command)) {
            enterProgram(entry.name, entry.tryProgram, rankOfOptions);
        }
    }
    if (!entry.command.empty() && !startsAnotherProgram(entry.command)) {
        enterProgram(entry.name, entry.command.front(), isPlain(entry.command) ? 0 : rankOfOptions);
    }
}

/** Whether a program is the first one that a command starts, however the two are written. */
bool DesktopNames::isStarted(const fs::path& program, const std::vector<std::string>& command) const {
    std::error_code none;
    return !command.empty() && fs::equivalent(findProgram(program), findProgram(command.front()), none);
}

void DesktopNames::enterProgram(const std::string& name, const fs::path& program, int rank) {
    const fs::path file = findProgram(program);
    std::error_code none;
    const fs::path target = fs::canonical(file, none);
    enterFile(name, file, rank);
    if (!isInterpreter(target)) {  // which a link may lead to as well
        enterFile(name, target, rank + rankOfLinks);
    }
    // Maybe a script: /usr/bin/chromium starts /usr/lib/chromium/chromium.
    if (std::ranges::find(m_Places.launcherFolders, target.parent_path()) != m_Places.launcherFolders.end()) {
        for (const fs::path& packages : m_Places.packageFolders) {
            claim(fileKey(packages / target.filename() / target.filename()), {name, rank + rankOfLinks});
        }
    }
}

/** Claims a file, and its folder where that is an application's own. */
void DesktopNames::enterFile(const std::string& name, const fs::path& file, int rank) {
    if (file.empty()) {
        return;
    }
    claim(fileKey(file), {name, rank});
    if (isBelow(file.parent_path(), m_Places.packageFolders) && !isShared(file.parent_path())) {
        claim(folderKey(file.parent_path()), {name, rank});
    }
}

void DesktopNames::claim(const std::string& key, const Claim& claim) {
    const auto [known, isNew] = m_Claims.try_emplace(key, claim);
    if (!isNew && claim.rank < known->second.rank) {
        known->second = claim;
    }
}

fs::path DesktopNames::findProgram(const fs::path& program) const {
    if (program.is_absolute()) {
        return ::access(program.c_str(), X_OK) == 0 ? program : fs::path();
    }
    for (const fs::path& folder : m_Places.programFolders) {
        if (::access((folder / program).c_str(), X_OK) == 0) {
            return folder / program;
        }
    }
    return {};
}

}  // namespace service
