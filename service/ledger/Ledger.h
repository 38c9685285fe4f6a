// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <map>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <unordered_map>
#include <vector>

#include "service/ledger/Records.h"
#include "service/traffic/TrafficSample.h"

namespace service {

/**
 * The truth of now: every application with its cumulative counters, and the connections that are alive.
 *
 * Any thread may call it; one mutex guards everything and is held for short, bounded work only.
 */
class Ledger {
  public:
    explicit Ledger(LedgerState state);

    Ledger(const Ledger&) = delete;
    Ledger& operator=(const Ledger&) = delete;

    /** Enters what a source reported. Samples of unknown applications and connections open new ones. */
    void apply(const std::vector<TrafficSample>& samples, Moment now);

    /** Forgets every application, connection and count; ids go on. Counting starts anew at `now`. */
    void clear(Moment now);

    /** What changed since the last call; for the one thread that writes the history. */
    LedgerChanges takeChanges(Moment now);

    /** Ids of the applications that were seen for the first time since the last call, oldest first. */
    std::vector<ApplicationId> takeNewApplications();

    std::optional<ApplicationRecord> application(ApplicationId id) const;

    /** A copy of all applications in the order of their ids. */
    std::vector<ApplicationRecord> applications() const;

    std::size_t applicationCount() const;

    /** The live connection of that id; nothing when it ended or never was. */
    std::optional<ConnectionRecord> liveConnection(ConnectionId id) const;

    TotalsRecord totals() const;
};

}  // namespace service
