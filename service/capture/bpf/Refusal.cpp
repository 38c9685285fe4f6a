// SPDX-License-Identifier: GPL-3.0-or-later
#include "service/capture/bpf/Refusal.h"

#include <linux/capability.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <string>
#include <utility>

namespace service {

namespace {

std::uint64_t effectiveCapabilities() {
    __user_cap_header_struct header{.version = _LINUX_CAPABILITY_VERSION_3, .pid = 0};
    std::array<__user_cap_data_struct, 2> sets{};
    ::syscall(SYS_capget, &header, sets.data());
    return static_cast<std::uint64_t>(sets[1].effective) << 32 | sets[0].effective;
}

/** The names of those that this process should have and has not, with commas. */
std::string missingCapabilities() {
    constexpr std::pair<int, const char*> needed[] = {
        {CAP_BPF, "CAP_BPF"}, {CAP_PERFMON, "CAP_PERFMON"}, {CAP_NET_ADMIN, "CAP_NET_ADMIN"}};
    std::uint64_t had = effectiveCapabilities();
    if ((had >> CAP_SYS_ADMIN & 1) != 0) {
        had |= 1ull << CAP_BPF | 1ull << CAP_PERFMON;  // which it comprises
    }
    std::string missing;
    for (const auto& [number, name] : needed) {
        if ((had >> number & 1) == 0) {
            missing += (missing.empty() ? "" : ", ") + std::string(name);
        }
    }
    return missing;
}

/** Whether the kernel lets not even root look into it. */
bool isLockedDown() {
    std::ifstream file("/sys/kernel/security/lockdown");
    std::string modes;
    std::getline(file, modes);
    return modes.find("[confidentiality]") != std::string::npos;
}

}  // namespace

std::string whyRefused(int failure, const std::string& detail) {
    if (failure == EPERM || failure == EACCES) {
        if (const std::string missing = missingCapabilities(); !missing.empty()) {
            return "it takes root, or CAP_BPF, CAP_PERFMON and CAP_NET_ADMIN; this process has no " + missing;
        }
        if (isLockedDown()) {
            return "the kernel is locked down (confidentiality)";
        }
    }
    const std::string cause = std::strerror(failure);
    return detail.empty() ? cause : cause + " (" + detail + ")";
}

}  // namespace service
