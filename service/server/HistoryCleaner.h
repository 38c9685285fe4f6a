// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <functional>

#include "service/ledger/Ledger.h"
#include "service/server/DaemonEvent.h"
#include "service/traffic/Clock.h"

namespace service {

/** Has everything forgotten that was counted, and tells the clients when that begins and ends. Server's
 * thread. */
class HistoryCleaner {
  public:
    /** What it needs of the daemon's other parts. */
    struct Hooks {
        Clock now;
        std::function<void()> wakeWriter;  ///< the ledger was cleared: wipe the store soon
        std::function<void(DaemonEvent)> tellClients;
    };

    /** `ledger` must outlive the cleaner. */
    HistoryCleaner(Ledger& ledger, Hooks hooks);

    /** Begins a cleaning; ignored while one is running. */
    void start();

    /** The store is wiped: the cleaning has ended. */
    void finish();

    bool isRunning() const { return m_Running; }

  private:
    Ledger& m_Ledger;
    Hooks m_Hooks;
    bool m_Running = false;
};

}  // namespace service
