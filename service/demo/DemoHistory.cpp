// SPDX-License-Identifier: GPL-3.0-or-later
#include "service/demo/DemoHistory.h"

#include <algorithm>
#include <utility>

#include "service/demo/DemoDesktop.h"
#include "service/demo/DemoProfiles.h"
#include "service/store/StoreBatch.h"

namespace service {

namespace {

using namespace std::chrono;

/** The kept moment after `previous`; the last one is the present, whatever its second. */
Moment nextKept(Moment previous, const DemoScene& scene) {
    const auto age = scene.present - previous;
    const seconds grain = age > days(1) ? hours(1) : age > hours(2) ? seconds(minutes(1)) : seconds(10);
    const Moment next = previous + grain;
    return std::min(next - next.time_since_epoch() % grain, scene.present);
}

/** How coarse `nextKept` is: its last step of each kind ends on or after the age at which a finer one begins. */
SeriesGrains keptGrains(const DemoScene& scene) {
    return {.until = {floor<duration<std::int64_t, std::ratio<10>>>(scene.present),
                      ceil<minutes>(scene.present - hours(2)), ceil<hours>(scene.present - days(1))}};
}

}  // namespace

Moment demoHistoryBegin(const DemoScene& scene) {
    return scene.present - days(365);
}

bool runDemoYear(const DemoScene& scene, Ledger& ledger,
                 const std::function<bool(const LedgerChanges&)>& keep) {
    DemoDesktop desktop(scene);
    Moment now = demoHistoryBegin(scene);
    for (const DemoProfile& profile : demoProfiles()) {
        desktop.start(profile, now);
    }
    while (now < scene.present) {
        now = nextKept(now, scene);
        // Connections open and close at their own seconds, not at those that are kept.
        for (Moment change = desktop.nextChange(); change < now; change = desktop.nextChange()) {
            ledger.apply(desktop.advance(change), change);
        }
        ledger.apply(desktop.advance(now), now);
        if (!keep(ledger.takeChanges(now))) {
            return false;
        }
    }
    return true;
}

bool writeDemoHistory(Store& store, const DemoScene& scene) {
    std::optional<LedgerState> state = store.load(demoHistoryBegin(scene));
    if (!state) {
        return false;
    }
    const bool isNew = state->applications.empty() && state->totals.start == demoHistoryBegin(scene);
    if (!isNew) {
        return true;
    }
    Ledger ledger(std::move(*state));
    StoreBatch batch(store);
    batch.setGrains(keptGrains(scene));
    return runDemoYear(scene, ledger, [&](const LedgerChanges& changes) { return batch.append(changes); }) &&
           batch.commit();
}

}  // namespace service
