// SPDX-License-Identifier: GPL-3.0-or-later
#include "service/DefaultDatabase.h"

#include <cstdlib>
#include <filesystem>
#include <system_error>

namespace service {

std::optional<std::string> defaultDatabasePath() {
    constexpr char file[] = "/nevtora-meter/history.sqlite";
    const char* dataHome = std::getenv("XDG_DATA_HOME");
    if (dataHome != nullptr && dataHome[0] == '/') {  // a relative one is to be ignored
        return std::string(dataHome) + file;
    }
    const char* home = std::getenv("HOME");
    if (home == nullptr || home[0] != '/') {
        return std::nullopt;
    }
    return std::string(home) + "/.local/share" + file;
}

bool makeFolderOf(const std::string& path, std::string& error) {
    const std::filesystem::path folder = std::filesystem::path(path).parent_path();
    std::error_code failure;
    if (!folder.empty() && !std::filesystem::is_directory(folder, failure)) {
        std::filesystem::create_directories(folder, failure);
    }
    if (failure) {
        error = "cannot make the folder " + folder.string() + ": " + failure.message();
    }
    return !failure;
}

}  // namespace service
