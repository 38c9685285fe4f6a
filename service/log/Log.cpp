// SPDX-License-Identifier: GPL-3.0-or-later
#include "service/log/Log.h"

#include <unistd.h>

namespace service {

void writeLogLine(const std::string& text) {
    const std::string line = "nevtora-daemon: " + text + "\n";
    // A log that cannot be written must not stop the daemon.
    [[maybe_unused]] const auto written = ::write(STDERR_FILENO, line.data(), line.size());
}

}  // namespace service
