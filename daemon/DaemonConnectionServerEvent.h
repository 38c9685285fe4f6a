// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>

/** A daemon's event on its way from the listener thread to the main thread. */
struct DaemonConnectionServerEvent {
    std::int32_t moduleId = 0;
    std::int32_t eventId = 0;
    std::int32_t param = 0;
};
