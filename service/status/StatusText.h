// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>
#include <vector>

#include "service/traffic/StatusLine.h"

namespace service {

/** "name: value" line by line, the values one below the other. */
std::string statusText(const std::vector<StatusLine>& lines);

}  // namespace service
