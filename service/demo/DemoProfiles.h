// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <vector>

#include "service/demo/DemoProfile.h"

namespace service {

/** The applications of the demo's year. */
const std::vector<DemoProfile>& demoProfiles();

/** Applications that the user tries for the first time while the demo runs, in this order. */
const std::vector<DemoProfile>& demoNewcomers();

}  // namespace service
