// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>

namespace service {

/** One thing that a person may want to know of the running daemon. */
struct StatusLine {
    std::string name;
    std::string value;
};

}  // namespace service
