// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <functional>

#include "daemon/ApplicationInfo.h"

class QMenu;

/** A menu of the applications that the daemon knows. Main thread. */
class ApplicationsMenu {
  public:
    using Filter = std::function<bool(const ApplicationInfo&)>;

    /**
     * Empties the menu and adds the applications that `isOffered` accepts, by name, each with its icon; an item's data
     * is the application's id. Those with an id of 0 or below are never offered. Letters typed then select by name.
     * Waits for the daemon, with a cursor of its own; without a link the menu stays empty.
     */
    static void fill(
        QMenu& menu, const Filter& isOffered = [](const ApplicationInfo&) { return true; });
};
