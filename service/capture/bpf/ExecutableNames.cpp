// SPDX-License-Identifier: GPL-3.0-or-later
#include "service/capture/bpf/ExecutableNames.h"

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

}  // namespace

ExecutableNames::ExecutableNames(BpfPrograms& programs) : m_Programs(programs) {}

Identity ExecutableNames::applicationOf(std::uint64_t number) {
    if (number == EXECUTABLE_KERNEL) {
        return kernel();
    }
    if (m_Programs.countedLosses().executables != m_Refused) {
        makeRoomInKernel();
    }
    Known* const known = number == EXECUTABLE_UNKNOWN ? nullptr : find(number);
    if (known == nullptr) {
        return unknownApplication();
    }
    Identity application = m_Names.identify(known->path, known->process);
    known->path = application->path;  // so that it stays when the process has ended
    return application;
}

ExecutableNames::Known* ExecutableNames::find(std::uint64_t number) {
    const auto position = m_Known.find(number);
    if (position != m_Known.end()) {
        return &position->second;
    }
    const std::optional<executable> entry = m_Programs.findExecutable(number);
    if (!entry || entry->length == 0) {
        return nullptr;
    }
    return &m_Known.try_emplace(number, Known{pathOf(*entry), static_cast<pid_t>(entry->process)})
                .first->second;
}

void ExecutableNames::makeRoomInKernel() {
    m_Refused = m_Programs.countedLosses().executables;
    m_Programs.takeExecutables([this](std::uint64_t number, const executable& entry) {
        m_Known.try_emplace(number, Known{pathOf(entry), static_cast<pid_t>(entry.process)});
    });
}

}  // namespace service
