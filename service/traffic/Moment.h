// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <chrono>

namespace service {

/** A moment inside the daemon: whole seconds of UTC. Local calendar time exists only at the link's edge. */
using Moment = std::chrono::sys_seconds;

}  // namespace service
