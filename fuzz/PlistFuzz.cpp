// SPDX-License-Identifier: GPL-3.0-or-later
// The settings files are read by a daemon that may be root, and written by whom it does not know. Whatever is read and
// can be written must come back the same.

#include <cstdint>
#include <cstdlib>

#include "config/PlistFile.h"
#include "config/PlistXml.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const auto value = config::readPlist({reinterpret_cast<const char*>(data), size});
    const auto document = value != nullptr ? config::writePlistXml(value.get()) : std::nullopt;
    if (document && config::writePlistXml(config::readPlist(*document).get()) != document) {
        std::abort();
    }
    return 0;
}
