// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <map>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "service/ledger/RecordingFilter.h"
#include "service/ledger/RecordingRule.h"
#include "service/ledger/Records.h"
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
     * Forgets every application, connection and count; ids go on. Counting starts anew at `now`: a connection
     * that lives on gets a new record at its next sample, with the bytes from there.
     */
    void clear(Moment now);

    /** What changed since the last call, in the order of ids; for the one thread that writes the history. */
    LedgerChanges takeChanges(Moment now);

    /** Ids of the applications that were seen for the first time since the last call, oldest first. */
    std::vector<ApplicationId> takeNewApplications();

    std::optional<ApplicationRecord> application(ApplicationId id) const;

    /** A copy of all applications in the order of their ids. */
    std::vector<ApplicationRecord> applications() const;

    /** The live connection of that id, its end being `now`; nothing when it ended or never was. */
    std::optional<ConnectionRecord> liveConnection(ConnectionId id, Moment now) const;

    TotalsRecord totals() const;

  private:
    using ConnectionKey = std::uint64_t;

    // All of these expect the mutex to be held.
    void enter(const TrafficSample& sample, Moment now);
    void record(const TrafficSample& sample, Moment recordedSince, Moment now);
    ApplicationRecord& applicationOf(const ApplicationIdentity& identity, Moment now);
    ConnectionRecord& connectionOf(const TrafficSample& sample, ApplicationId application,
                                   Moment recordedSince, Moment now);
    void closeConnection(ConnectionKey key, Moment now);
    void changeRule(RecordingRule rule, Moment now);

    mutable std::mutex m_Mutex;  ///< guards everything below

    RecordingFilter m_Filter;
    std::optional<RecordingRule> m_NextRule;

    TotalsRecord m_Totals;
    std::map<ApplicationId, ApplicationRecord> m_Applications;
    std::unordered_map<std::string, ApplicationId> m_ApplicationIds;  ///< by path
    std::unordered_map<ConnectionKey, ConnectionRecord> m_Live;
    std::unordered_map<ConnectionId, ConnectionKey> m_LiveKeys;
    ApplicationId m_NextApplicationId;
    ConnectionId m_NextConnectionId;

    // Since the changes were taken last:
    std::set<ApplicationId> m_ChangedApplications;
    std::unordered_set<ConnectionKey> m_ChangedConnections;  ///< live ones
    std::vector<ConnectionRecord> m_Ended;
    bool m_Wiped = false;

    std::vector<ApplicationId> m_NewApplications;  ///< since they were taken last
};

}  // namespace service
