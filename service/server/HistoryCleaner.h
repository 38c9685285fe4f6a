// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <functional>

#include "service/ledger/Ledger.h"
#include "service/server/DaemonEvent.h"
#include "service/traffic/Clock.h"

namespace service {

/**
 * Has everything forgotten that was counted, and tells the clients when that begins and ends. In between they are
 * answered as before; what moves from the beginning on is counted. Server's thread.
 */
class HistoryCleaner {
  public:
    /** What it needs of the daemon's other parts. */
    struct Hooks {
        Clock now;
        std::function<void()> wipe;  ///< the ledger's clearing has begun: have the writer end it
        std::function<void(DaemonEvent)> tellClients;
    };

    /** `ledger` must outlive the cleaner. */
    HistoryCleaner(Ledger& ledger, Hooks hooks);

    /** Begins a cleaning; while one is running that one will do. */
    void start();

    /** The cleaning has ended. Without success too the clients are told so: nobody is to wait for a full disk. */
    void finish(bool wiped);

    bool isRunning() const { return m_Running; }

  private:
    Ledger& m_Ledger;
    Hooks m_Hooks;
    bool m_Running = false;
};

}  // namespace service
