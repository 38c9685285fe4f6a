// SPDX-License-Identifier: GPL-3.0-or-later
#include "service/status/StatusText.h"

#include <algorithm>

namespace service {

std::string statusText(const std::vector<StatusLine>& lines) {
    std::size_t width = 0;
    for (const StatusLine& line : lines) {
        width = std::max(width, line.name.size());
    }
    std::string text;
    for (const StatusLine& line : lines) {
        text += line.name + ":" + std::string(width - line.name.size() + 1, ' ') + line.value + "\n";
    }
    return text;
}

}  // namespace service
