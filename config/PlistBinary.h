// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string_view>

#include "config/PlistNode.h"

namespace config {

/** True for what begins like a binary property list. */
bool isPlistBinary(std::string_view file);

/**
 * The value in a binary property list; null for what is none. In this form a value can stand in many places at the
 * cost of one, and libplist copies it to each: refused is what would need more than 64 MiB, nests more than 256 deep
 * or contains itself, before libplist sees it. Refused as well are texts with a zero in them and dictionaries that
 * have a key twice.
 */
PlistNode readPlistBinary(std::string_view file);

}  // namespace config
