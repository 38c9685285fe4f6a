// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <unordered_set>
#include <vector>

#include "service/ledger/RecordingFilter.h"
#include "service/ledger/RecordingRule.h"
#include "service/ledger/Records.h"
#include "service/ledger/Tally.h"
#include "service/traffic/TrafficSample.h"

namespace service {

/**
 * The truth of now: every application with its cumulative counters, and the connections that are alive.
 *
 * Any thread may call it; one mutex guards everything and is held for short, bounded work only. Memory is
 * bounded by what lives: a connection that ended is kept only until its last state has been taken.
 */
class Ledger {
  public:
    explicit Ledger(LedgerState state, RecordingRule rule = RecordingRule());

    Ledger(const Ledger&) = delete;
    Ledger& operator=(const Ledger&) = delete;

    /**
     * Enters what a source reported. Samples of unknown applications and connections open new ones. A
     * connection that was handed on belongs to the application that moved bytes over it last.
     *
     * Of an application that is not recorded nothing is entered. A connection that such a one shares with one
     * that is recorded holds the bytes of the latter alone, and ends when it ends.
     */
    void apply(const std::vector<TrafficSample>& samples, Moment now);

    /**
     * Has `rule` hold from the end of the next `apply` on: a sample tells of bytes that moved before it, when
     * the old rule held. Then live connections of applications that are not recorded any more are closed with
     * their bytes so far; applications keep their counts. A connection that lives on unrecorded gets a new
     * record at its first sample after its application is recorded again, with the bytes from there.
     */
    void setRule(RecordingRule rule);

    /**
     * Begins to forget every application, connection and count of before `now`. What moves from here on is also
     * entered in a fresh count from zero, whose ids go on: there a connection that lives on gets a new record at
     * its next sample, with the bytes from there. Until the clearing has ended everything shows as if nobody had
     * asked for it, so that it can be given up without a trace.
     */
    void beginClearing(Moment now);

    /** What changed in the fresh count since it began, as `wiped`; for the thread that then ends the clearing. */
    LedgerChanges takeFresh(Moment now);

    /** `cleared`: the fresh count takes the old one's place. Otherwise it goes, and the old one stays. */
    void endClearing(bool cleared);

    /** What changed since the last call, in the order of ids; for the one thread that writes the history. */
    LedgerChanges takeChanges(Moment now);

    /**
     * Ids of the applications that were seen for the first time since the last call, oldest first. None that was known
     * before a clearing: it is not the user who meets it anew.
     */
    std::vector<ApplicationId> takeNewApplications();

    std::optional<ApplicationRecord> application(ApplicationId id) const;

    /** A copy of all applications in the order of their ids. */
    std::vector<ApplicationRecord> applications() const;

    /** The live connection of that id, its end being `now`; nothing when it ended or never was. */
    std::optional<ConnectionRecord> liveConnection(ConnectionId id, Moment now) const;

    TotalsRecord totals() const;

  private:
    // All of these expect the mutex to be held.
    void enter(const TrafficSample& sample, Moment now);
    void changeRule(RecordingRule rule, Moment now);
    void keepFromNews(Tally& tally);
    template <class Action>
    void forEachTally(Action action);

    mutable std::mutex m_Mutex;  ///< guards everything below

    RecordingFilter m_Filter;
    std::optional<RecordingRule> m_NextRule;

    NextIds m_Ids;
    std::unique_ptr<Tally> m_Shown;
    std::unique_ptr<Tally> m_Fresh;              ///< while a clearing is under way
    std::unordered_set<std::string> m_OldPaths;  ///< of applications that were known before a clearing
};

}  // namespace service
