// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <fstream>
#include <string>

namespace bench {

/** The most that this process had resident since its start or the last `forgetPeakMemory`, in MB. */
inline double peakMemory() {
    std::ifstream status("/proc/self/status");
    for (std::string word; status >> word;) {
        if (double kib = 0; word == "VmHWM:" && status >> kib) {
            return kib * 1024 / 1e6;
        }
    }
    return 0;
}

inline void forgetPeakMemory() {
    std::ofstream("/proc/self/clear_refs") << "5";
}

}  // namespace bench
