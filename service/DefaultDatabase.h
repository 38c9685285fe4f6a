// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <optional>
#include <string>

namespace service {

/** The history's file in the user's data folder; nothing when the environment does not tell where that is. */
std::optional<std::string> defaultDatabasePath();

/** Makes the folder of a file, and those above it, for its owner only. False with the reason in `error`. */
bool makeFolderOf(const std::string& path, std::string& error);

}  // namespace service
