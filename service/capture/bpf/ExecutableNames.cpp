// SPDX-License-Identifier: GPL-3.0-or-later
#include "service/capture/bpf/ExecutableNames.h"

#include <sys/sysmacros.h>

#include <algorithm>
#include <cstring>
#include <string_view>
#include <utility>

namespace service {

namespace {

using Identity = std::shared_ptr<const ApplicationIdentity>;

const Identity& kernel() {
    static const Identity identity =
        std::make_shared<const ApplicationIdentity>(ApplicationIdentity{"", "System kernel"});
    return identity;
}

/** The path whose names stand in the order from the file to the root. */
std::string pathOf(const executable& entry) {
    const std::size_t length = std::min<std::size_t>(entry.length, sizeof(entry.path));
    std::string_view names(entry.path, length);
    std::string path;
    while (!names.empty()) {
        const std::size_t end = std::min(names.find('\0'), names.size());
        path.insert(0, "/" + std::string(names.substr(0, end)));
        names.remove_prefix(std::min(end + 1, names.size()));
    }
    return path;
}

Program programOf(const executable& entry) {
    constexpr unsigned minorBits = 20;
    const unsigned minor = entry.device & ((1u << minorBits) - 1);
    return {.path = pathOf(entry),
            .process = static_cast<pid_t>(entry.process),
            .device = ::makedev(entry.device >> minorBits, minor),
            .inode = entry.inode,
            .isApart = entry.root != 0,
            .mountNamespace = entry.mount_namespace};
}

}  // namespace

ExecutableNames::ExecutableNames(BpfPrograms& programs) : m_Programs(programs) {}

Identity ExecutableNames::applicationOf(std::uint64_t number) {
    if (number == EXECUTABLE_KERNEL) {
        return kernel();
    }
    if (m_Programs.keptExecutables() > MAX_EXECUTABLES / 4 * 3) {
        makeRoomInKernel();
    }
    const std::string path = number == EXECUTABLE_UNKNOWN ? "" : find(number);
    return path.empty() ? unknownApplication() : m_Names.applicationAt(path);
}

std::string ExecutableNames::find(std::uint64_t number) {
    const auto known = m_Known.find(number);
    if (known != m_Known.end()) {
        return known->second;
    }
    const std::optional<executable> entry = m_Programs.findExecutable(number);
    return entry && entry->length != 0 ? keep(number, *entry) : "";
}

const std::string& ExecutableNames::keep(std::uint64_t number, const executable& entry) {
    const auto [position, isNew] = m_Known.try_emplace(number);
    if (isNew) {
        position->second = m_Names.find(programOf(entry));
    }
    return position->second;
}

void ExecutableNames::makeRoomInKernel() {
    m_Programs.takeExecutables(
        [this](std::uint64_t number, const executable& entry) { keep(number, entry); });
}

}  // namespace service
