// SPDX-License-Identifier: GPL-3.0-or-later
#include "service/demo/DemoScene.h"

#include <ctime>

namespace service {

DemoScene DemoScene::here(Moment present) {
    const std::time_t epochSeconds = std::chrono::system_clock::to_time_t(present);
    std::tm local{};
    localtime_r(&epochSeconds, &local);
    return {.present = present, .utcOffset = std::chrono::seconds(local.tm_gmtoff)};
}

}  // namespace service
