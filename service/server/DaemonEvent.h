// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>

namespace service {

/** What events tell, in either direction. On the wire: never renumber. */
enum class DaemonEvent : std::int32_t {
    ApplicationAdded = 0,      ///< daemon to client; its parameter is the application's id
    CleanHistory = 1,          ///< client to daemon
    CleaningStarted = 2,       ///< daemon to client
    CleaningFinished = 3,      ///< daemon to client
    ConfigurationChanged = 4,  ///< client to daemon
};

}  // namespace service
