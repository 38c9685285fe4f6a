// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <optional>

#include "service/ledger/Ledger.h"
#include "service/store/HistoryReader.h"
#include "service/traffic/Clock.h"

namespace service {

/** Bytes moved up to a moment: asks the ledger for now, the history for then. For the history's thread. */
class CumulativeBytes {
  public:
    /** Ledger and history must outlive this object. */
    CumulativeBytes(const Ledger& ledger, HistoryReader& history, Clock now);

    /**
     * Bytes of one application, or of all without an id, up to and including `moment`. `socketProtocol` is as
     * on the wire: 6 TCP, 17 UDP, -1 everything. 0 for other protocols, an unknown application and moments
     * before the first byte.
     */
    ByteCount upTo(Moment moment, std::optional<ApplicationId> application, std::int32_t socketProtocol);

  private:
    /** Nothing for an unknown application. */
    std::optional<Counters> presentCounters(std::optional<ApplicationId> application) const;

    const Ledger& m_Ledger;
    HistoryReader& m_History;
    Clock m_Now;
};

}  // namespace service
