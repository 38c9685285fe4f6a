// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <optional>
#include <vector>

#include "service/server/ClientSession.h"
#include "service/server/FrameScanner.h"
#include "tests/service/server/RequestFrame.h"
#include "tests/service/store/StoreFixture.h"

namespace service {

/** Everything that a session answers from, with a clock that the test sets. */
class SessionFixture : public StoreFixture {
  protected:
    /** Moves bytes over a connection, without writing them to the store. */
    void move(const TrafficSample& sample) { ledger.apply({sample}, now); }

    /** Writes what changed in the ledger, as the writer does. */
    void writeHistory() { ASSERT_TRUE(store->append(ledger.takeChanges(now))); }

    SessionContext context() {
        return {.ledger = ledger,
                .history = *history,
                .orders = orders,
                .cleaner = cleaner,
                .textOrder = textOrder,
                .now = [this] { return now; },
                .configurationChanged = [] {}};
    }

    Moment now = at(100);
    Ledger ledger{store->load(at(0)).value()};
    std::unique_ptr<HistoryReader> history = reader();
    ConnectionOrders orders{reader(), 100};
    TextOrder textOrder;
    HistoryCleaner cleaner{ledger,
                           {.now = [this] { return now; }, .wipe = [] {}, .tellClients = [](DaemonEvent) {}}};
};

}  // namespace service
