// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

namespace service {

/** An answer, or none yet: who asks is told when to ask again. */
template <class Value>
struct Later {
    bool isThere = false;
    Value value{};
};

}  // namespace service
