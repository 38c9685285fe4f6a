// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "service/ledger/RecordingFilter.h"
#include "service/ledger/Records.h"
#include "service/traffic/TrafficSample.h"

namespace service {

/** The ids that come next; whoever takes one counts on. */
struct NextIds {
    ApplicationId application = 1;
    ConnectionId connection = 1;
};

/**
 * What was counted since some moment: applications with their cumulative counters, the connections that are
 * alive, and what of both the history does not know yet. For one thread at a time.
 */
class Tally {
  public:
    /** Goes on from what was counted before; `ids` must outlive the tally. */
    Tally(const TotalsRecord& totals, std::vector<ApplicationRecord> applications, NextIds& ids);

    Tally(const Tally&) = delete;
    Tally& operator=(const Tally&) = delete;

    /** Enters the bytes of a sample, whose application is recorded since then. */
    void record(const TrafficSample& sample, Moment recordedSince, Moment now);

    /** The connection of that key has ended; one that is unknown is ignored. */
    void close(std::uint64_t connectionKey, Moment now);

    /** Ends the records of connections whose applications are not recorded. */
    void closeUnrecorded(RecordingFilter& filter, Moment now);

    /** What changed since the last call, in the order of ids. */
    LedgerChanges takeChanges(Moment now);

    /** Ids of the applications that were seen for the first time since the last call, oldest first. */
    std::vector<ApplicationId> takeNewApplications();

    const TotalsRecord& totals() const { return m_Totals; }
    std::optional<ApplicationRecord> application(ApplicationId id) const;
    std::vector<ApplicationRecord> applications() const;
    std::optional<ConnectionRecord> liveConnection(ConnectionId id) const;

  private:
    using ConnectionKey = std::uint64_t;

    ApplicationRecord& applicationOf(const ApplicationIdentity& identity, Moment now);
    ConnectionRecord& connectionOf(const TrafficSample& sample, ApplicationId application,
                                   Moment recordedSince, Moment now);

    NextIds& m_Ids;
    TotalsRecord m_Totals;
    std::map<ApplicationId, ApplicationRecord> m_Applications;
    std::unordered_map<std::string, ApplicationId> m_ApplicationIds;  ///< by path
    std::unordered_map<ConnectionKey, ConnectionRecord> m_Live;
    std::unordered_map<ConnectionId, ConnectionKey> m_LiveKeys;

    // Since the changes were taken last:
    std::set<ApplicationId> m_ChangedApplications;
    std::unordered_set<ConnectionKey> m_ChangedConnections;  ///< live ones
    std::vector<ConnectionRecord> m_Ended;

    std::vector<ApplicationId> m_NewApplications;  ///< since they were taken last
};

}  // namespace service
