// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <optional>
#include <string>

namespace service {

/**
 * Asks the daemon that keeps this history for its status; nothing with the reason in `error`. Waits 5 s at
 * most.
 */
std::optional<std::string> queryStatus(const std::string& databasePath, std::string& error);

}  // namespace service
