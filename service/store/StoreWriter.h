// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <functional>

#include "service/ledger/Ledger.h"
#include "service/store/Store.h"

namespace service {

/**
 * The one thread that writes the history: once a second it takes what changed in the ledger and appends it.
 * The destructor writes what is left, then ends the thread.
 */
class StoreWriter {
  public:
    /** Both must outlive the writer. `onWiped` is called on the writer's thread after a cleared ledger's wipe
     * is on disk. */
    StoreWriter(Ledger& ledger, Store& store, std::function<void()> onWiped);

    /** Writes at once instead of at the next second; any thread. */
    void wake();
};

}  // namespace service
