// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <functional>

#include "service/ledger/Ledger.h"
#include "service/server/ConnectionOrders.h"
#include "service/server/HistoryCleaner.h"
#include "service/server/TextOrder.h"
#include "service/store/HistoryReader.h"
#include "service/traffic/Clock.h"

namespace service {

/** What the clients' requests are answered from; all of it outlives the sessions. */
struct SessionContext {
    Ledger& ledger;
    HistoryReader& history;
    ConnectionOrders& orders;
    HistoryCleaner& cleaner;
    const TextOrder& textOrder;
    Clock now;
    std::function<void()> configurationChanged;
};

}  // namespace service
