// SPDX-License-Identifier: GPL-3.0-or-later
#include "service/ledger/RecordingRule.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace service {

namespace {

constexpr char kernelPath[] = "/mach_kernel";  // what the window shows and lists for the kernel

/** A bundle is a folder; its name tells. The window lists an application in any of these by its bundle. */
bool isBundle(std::string_view path) {
    constexpr std::array<std::string_view, 3> suffixes{".app", ".framework", ".bundle"};
    return std::ranges::any_of(suffixes, [path](std::string_view suffix) { return path.ends_with(suffix); });
}

}  // namespace

void RecordingRule::list(const std::string& path, const std::string& resolvedPath) {
    m_Paths.insert({path, resolvedPath});
    if (isBundle(path) || isBundle(resolvedPath)) {
        m_Bundles.insert({path, resolvedPath});
    }
}

bool RecordingRule::records(const std::string& executablePath) const {
    switch (m_Mode) {
        case Mode::OnlyListed:
            return isListed(executablePath);
        case Mode::AllButListed:
            return !isListed(executablePath);
        case Mode::All:
            break;
    }
    return true;
}

bool RecordingRule::isListed(const std::string& executablePath) const {
    const std::string path = executablePath.empty() ? kernelPath : executablePath;
    if (m_Paths.contains(path)) {
        return true;
    }
    for (std::size_t slash = path.find('/'); slash != std::string::npos; slash = path.find('/', slash + 1)) {
        if (m_Bundles.contains(path.substr(0, slash))) {
            return true;
        }
    }
    return false;
}

}  // namespace service
