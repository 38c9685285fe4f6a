// SPDX-License-Identifier: GPL-3.0-or-later
#include "config/PlistFile.h"

#include "config/FileReplacement.h"
#include "config/PlistBinary.h"
#include "config/PlistXml.h"

namespace config {

PlistNode readPlist(std::string_view file) {
    if (file.size() > maxFileBytes) {
        return nullptr;
    }
    return isPlistBinary(file) ? readPlistBinary(file) : readPlistXml(file);
}

PlistNode loadPlist(const std::string& path) {
    const auto file = readFile(path);
    return file ? readPlist(*file) : nullptr;
}

bool savePlist(const std::string& path, plist_t value) {
    const auto document = value != nullptr ? writePlistXml(value) : std::nullopt;
    return document && document->size() <= maxFileBytes && replaceFile(path, *document);
}

}  // namespace config
