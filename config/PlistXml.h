// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "config/PlistNode.h"

namespace config {

/**
 * The value in an XML property list; null for what is none. libplist's own reader takes broken documents for whole
 * ones, so Expat reads the document and only single values go through libplist. Refused are documents that declare
 * entities, and values nested more than 256 deep.
 */
PlistNode readPlistXml(std::string_view document);

/**
 * The XML document for a value, in UTF-8. Nothing when it could not be read back: with control characters in a text,
 * for example, or text that is not UTF-8.
 */
std::optional<std::string> writePlistXml(plist_t value);

}  // namespace config
