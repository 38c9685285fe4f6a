// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "service/capture/ListeningPorts.h"
#include "service/capture/SocketOwners.h"
#include "service/capture/SocketReport.h"
#include "service/traffic/Moment.h"
#include "service/traffic/TrafficSample.h"

namespace service {

/**
 * Turns what the kernel says of sockets into what connections did: knows each connection by its socket's
 * cookie, what it had moved before, and whose it is.
 *
 * A connection is handed out once its owner is known, or has been searched for in vain, or the connection has
 * ended; until then its bytes wait. So do those of a connection that no process has accepted yet. Asks nobody
 * for anything, so it has no errors. One thread at a time.
 */
class ConnectionTable {
  public:
    /** @param missedDumps a connection that this many whole dumps in a row leave out has ended */
    explicit ConnectionTable(std::uint64_t missedDumps);

    /**
     * Enters a dump. Up to and including the first whole one, what connections moved before is not counted.
     *
     * @param whole false when the dump may lack sockets; then nothing follows from a connection's absence
     */
    void enterDump(const std::vector<SocketReport>& reports, bool whole, Moment now);

    /** Sockets that are in some process's hands, not known yet whose. */
    SocketOwners::Inodes inodesWithoutOwner() const;

    /** Enters the outcome of a search for all of `inodesWithoutOwner()`. */
    void enterOwners(const SocketOwners::Owners& owners);

    /** Enters the last report on a socket that is gone. */
    void enterDestroyed(const SocketReport& report, Moment now);

    /** New, moved or ended since the last call. */
    std::vector<TrafficSample> takeSamples();

  private:
    struct Connection {
        TrafficSample sample;     ///< the next to hand out; `application` is null while its owner is sought
        ByteCount payload;        ///< up to the latest report
        ByteCount overhead;       ///< likewise
        std::uint32_t inode = 0;  ///< 0: accepted by nobody yet
        std::uint64_t lastDump = 0;  ///< number of the latest dump it was in
        int searches = 0;            ///< for its owner, in vain
        bool handedOut = false;
    };
    using Connections = std::unordered_map<std::uint64_t, Connection>;

    void enterConnection(const SocketReport& report, Moment now);
    Connections::iterator open(const SocketReport& report, Moment now);
    static void count(Connection& connection, const SocketReport& report);
    Connections::iterator close(Connections::iterator position);
    void closeMissing();
    void rememberWithoutNotice(std::uint64_t cookie);

    const std::uint64_t m_MissedDumps;
    std::uint64_t m_WholeDumps = 0;
    std::uint64_t m_NextKey = 1;
    ListeningPorts m_ListeningPorts;
    Connections m_Connections;  ///< by cookie
    std::vector<TrafficSample> m_Ended;

    /** Cookies of connections closed for their absence: a late notice must not count them as new ones. */
    std::unordered_set<std::uint64_t> m_ClosedWithoutNotice;
};

}  // namespace service
