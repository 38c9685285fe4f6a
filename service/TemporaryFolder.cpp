// SPDX-License-Identifier: GPL-3.0-or-later
#include "service/TemporaryFolder.h"

#include <stdlib.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <system_error>
#include <utility>

namespace service {

std::unique_ptr<TemporaryFolder> TemporaryFolder::make(std::string& error) {
    std::error_code failure;
    std::string path = (std::filesystem::temp_directory_path(failure) / "nevtora-daemon-XXXXXX").string();
    if (failure || ::mkdtemp(path.data()) == nullptr) {
        error = "cannot make a temporary folder: " + (failure ? failure.message() : std::strerror(errno));
        return nullptr;
    }
    return std::unique_ptr<TemporaryFolder>(new TemporaryFolder(std::move(path)));
}

TemporaryFolder::TemporaryFolder(std::string path) : m_Path(std::move(path)) {}

TemporaryFolder::~TemporaryFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(m_Path, ignored);
}

}  // namespace service
