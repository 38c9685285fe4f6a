// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <functional>

#include "service/demo/DemoScene.h"
#include "service/ledger/Ledger.h"
#include "service/store/Store.h"

namespace service {

/** The moment at which the demo's history begins: a year before the scene's present. */
Moment demoHistoryBegin(const DemoScene& scene);

/**
 * Lives through the demo's year: enters its traffic into a ledger that begins at `demoHistoryBegin` and hands
 * what changed to `keep` at every moment that a history of that age would have kept: hours, for the last day
 * minutes, for the last two hours every ten seconds. False as soon as `keep` is false.
 */
bool runDemoYear(const DemoScene& scene, Ledger& ledger,
                 const std::function<bool(const LedgerChanges&)>& keep);

/**
 * Fills a new store with the demo's year, all of it or nothing; a store that counted before is left as it is.
 * False when the disk refused: the reason is the store's `lastError`.
 */
bool writeDemoHistory(Store& store, const DemoScene& scene);

}  // namespace service
