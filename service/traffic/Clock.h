// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <chrono>
#include <functional>

#include "service/traffic/Moment.h"

namespace service {

/** Tells what time it is; tests bring their own. */
using Clock = std::function<Moment()>;

inline Moment systemClock() {
    return std::chrono::floor<std::chrono::seconds>(std::chrono::system_clock::now());
}

}  // namespace service
