// SPDX-License-Identifier: GPL-3.0-or-later
#include "service/naming/ApplicationNames.h"

#include <unicode/unistr.h>

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

}  // namespace

ApplicationNames::ApplicationNames(NamingPlaces places)
    : m_Finder(places.processes, places.root),
      m_DesktopNames(std::move(places)),
      m_NextRefresh(std::chrono::steady_clock::now() + refreshInterval) {}

std::string ApplicationNames::find(const Program& program) {
    return validUtf8(m_Finder.find(program));
}

std::shared_ptr<const ApplicationIdentity> ApplicationNames::applicationAt(const std::string& path) {
    refreshWhenDue();
    auto& application = m_Known[path];
    if (!application) {
        application = std::make_shared<const ApplicationIdentity>(ApplicationIdentity{path, nameOf(path)});
    }
    return application;
}

std::string ApplicationNames::nameOf(const std::string& path) const {
    const std::string file = path.substr(path.rfind('/') + 1);
    if (path.starts_with('/')) {
        const std::string name = validUtf8(m_DesktopNames.nameOf(path));
        return name.empty() ? file : name;
    }
    const std::string place = path.substr(0, path.find('/'));
    return place.ends_with(':') ? file + " (" + place.substr(0, place.size() - 1) + ")" : file + " " + place;
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
