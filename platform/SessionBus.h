// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

/** The user's D-Bus session. */
class SessionBus {
  public:
    /** Ask this before the first use of the bus: where none runs, connecting would start one. */
    static bool isThere();
};
