// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "service/capture/ConnectionTable.h"
#include "service/capture/NetlinkSocket.h"
#include "service/capture/SocketOwners.h"
#include "service/traffic/TrafficSource.h"

namespace service {

/**
 * TCP traffic of this network namespace, from the kernel's socket diagnostics: each poll dumps all TCP
 * sockets with their byte counters, and notices of destroyed sockets bring the last counters of those that
 * ended in between.
 *
 * Counts payload, not headers. Works without privileges; then the applications of other users' connections
 * stay unknown. A connection shorter than the time between two polls is counted, but its owner is unknown
 * too: by the time the kernel tells of it no process holds it any more. So is who opened it, unless its local
 * port was seen listening. Half-open connections are no connections yet.
 */
class DiagSource : public TrafficSource {
  public:
    /** Null with the reason in `error` when socket diagnostics are not to be had. */
    static std::unique_ptr<DiagSource> create(std::string& error);

    std::string_view name() const override { return "diag"; }
    std::vector<TrafficSample> poll(Moment now) override;
    std::vector<StatusLine> status() const override;

  private:
    /** @param notices subscribed to the notices of destroyed sockets; null where that was refused */
    DiagSource(std::vector<std::int32_t> socketDomains, std::unique_ptr<NetlinkSocket> notices);

    void enterDump(Moment now);
    void enterNotices(Moment now);

    const std::vector<std::int32_t> m_SocketDomains;  ///< those that the kernel can dump
    const std::unique_ptr<NetlinkSocket> m_Notices;
    ConnectionTable m_Connections;
    SocketOwners m_Owners;
    bool m_DumpFailing = false;  ///< the latest poll's dump failed; logged when that begins
    bool m_NoticesLost = false;  ///< likewise for notices that the kernel dropped

    // What has gone wrong since the start, for any thread to read.
    std::atomic<std::uint64_t> m_FailedDumps = 0;
    std::atomic<std::uint64_t> m_LossesOfNotices = 0;
};

}  // namespace service
