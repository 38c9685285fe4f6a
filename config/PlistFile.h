// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>
#include <string_view>

#include "config/PlistNode.h"

namespace config {

/** The value in an XML or binary property list of 4 MiB at most; null for what is none. */
PlistNode readPlist(std::string_view file);

/** What a file holds; null when it cannot be read or is no property list. */
PlistNode loadPlist(const std::string& path);

/** Replaces a file with the value's XML form; false for null, and when that cannot be made, read back or written. */
bool savePlist(const std::string& path, plist_t value);

}  // namespace config
