// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <optional>

#include "libs/sqlite/Query.h"
#include "service/ledger/Records.h"
#include "service/traffic/Counters.h"
#include "service/traffic/Moment.h"

namespace service {

/** In the series, the application that stands for all of them. */
inline constexpr ApplicationId allApplications = 0;

/** Looks up the cumulative counters of applications at a moment. For the thread of its database. */
class SeriesReader {
  public:
    explicit SeriesReader(SQLite::Database& database);

    bool isValid() const { return m_LastRow.IsValid(); }

    /**
     * The last row at or before `moment`: one index seek. 0 before the first. Before the moment since which the
     * history is kept it is what it was at that moment, for every application alike: the past that was dropped
     * lies before the beginning of time, no difference of two totals has it in one heap, and the sum over all
     * applications stays that of all. Nothing when it cannot be read, with the reason in the database's
     * `GetLastError`.
     */
    std::optional<ByteCount> upTo(ApplicationId application, ProtocolClass protocolClass, Moment moment);

    /** All classes at or before `moment`. */
    std::optional<Counters> upTo(ApplicationId application, Moment moment);

  private:
    SQLite::Query m_LastRow;
};

}  // namespace service
