// SPDX-License-Identifier: GPL-3.0-or-later
#include "service/naming/ApplicationNames.h"

#include <unicode/unistr.h>

#include <fstream>
#include <string_view>
#include <utility>

namespace service {

namespace {

/** How long a new desktop entry may go unnoticed. A look costs some 20 us, programs may come 10,000 a second. */
constexpr std::chrono::seconds refreshInterval{2};

/** A file's name is any bytes: those that are no UTF-8 become U+FFFD, since the link and the history hold text. */
std::string validUtf8(const std::string& bytes) {
    std::string text;
    icu::UnicodeString::fromUTF8(bytes).toUTF8String(text);
    return text;
}

/** "/snap/NAME/REVISION/..." with "current", the link to the revision in use; any other path as it is. */
std::string withoutSnapRevision(const std::string& path) {
    constexpr std::string_view snaps = "/snap/";
    if (!path.starts_with(snaps)) {
        return path;
    }
    const std::size_t nameEnd = path.find('/', snaps.size());
    const std::size_t revisionEnd = nameEnd == std::string::npos ? nameEnd : path.find('/', nameEnd + 1);
    if (revisionEnd == std::string::npos) {
        return path;
    }
    return path.substr(0, nameEnd) + "/current" + path.substr(revisionEnd);
}

/** ".../app/ID/ARCHITECTURE/BRANCH/COMMIT/files" with "active", the link to the commit in use. */
std::filesystem::path withoutCommit(const std::filesystem::path& files) {
    return files.parent_path().parent_path() / "active" / files.filename();
}

}  // namespace

ApplicationNames::ApplicationNames(NamingPlaces places)
    : m_Processes(places.processes),
      m_DesktopNames(std::move(places)),
      m_NextRefresh(std::chrono::steady_clock::now() + refreshInterval) {}

std::shared_ptr<const ApplicationIdentity> ApplicationNames::identify(const std::string& path,
                                                                      pid_t process) {
    refreshWhenDue();
    const std::string onMachine = validUtf8(pathOnMachine(path, process));
    auto& application = m_Known[onMachine];
    if (!application) {
        std::string name = validUtf8(m_DesktopNames.nameOf(onMachine));
        if (name.empty()) {
            name = onMachine.substr(onMachine.rfind('/') + 1);
        }
        application = std::make_shared<const ApplicationIdentity>(ApplicationIdentity{onMachine, name});
    }
    return application;
}

std::string ApplicationNames::pathOnMachine(const std::string& path, pid_t process) const {
    return path.starts_with("/app/") ? flatpakFile(path, process) : withoutSnapRevision(path);
}

/** Where a file that a Flatpak sees below /app/ lies; `path` itself where its sandbox tells of none. */
std::string ApplicationNames::flatpakFile(const std::string& path, pid_t process) const {
    constexpr std::string_view inside = "/app/";
    constexpr std::string_view key = "app-path=";
    std::ifstream info(m_Processes / std::to_string(process) / "root/.flatpak-info");
    for (std::string line; std::getline(info, line);) {
        if (line.starts_with(key) && line.find("/app/") != std::string::npos) {
            return withoutCommit(line.substr(key.size())) / path.substr(inside.size());
        }
    }
    return path;
}

void ApplicationNames::refreshWhenDue() {
    const auto now = std::chrono::steady_clock::now();
    if (now < m_NextRefresh) {
        return;
    }
    m_NextRefresh = now + refreshInterval;
    if (m_DesktopNames.refresh()) {
        m_Known.clear();
    }
}

}  // namespace service
