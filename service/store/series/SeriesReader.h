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

    bool isValid() const { return m_Rows.IsValid(); }

    /**
     * The last row at or before `moment`: one index seek. 0 before the first. Nothing when it cannot be read, with
     * the reason in the database's `GetLastError`. Where only the end of an interval is known, as `SeriesGrain.h`
     * tells, its bytes are taken to have moved evenly in it, rounded down: totals never sink with time.
     *
     * Moments before the history is kept count as the first kept one, for all applications alike. Were the total
     * 0 there, a chart that reaches across would show all of the dropped past as a spike in one step; as it is it
     * shows none of it, and the sum over the applications is that of all at every moment.
     */
    std::optional<ByteCount> upTo(ApplicationId application, ProtocolClass protocolClass, Moment moment);

    /** All classes at or before `moment`, with their payload. */
    std::optional<Counters> upTo(ApplicationId application, Moment moment);

  private:
    struct Total {
        ByteCount moved;
        ByteCount payload;
    };

    std::optional<Total> total(ApplicationId application, ProtocolClass protocolClass, Moment moment);
    Total interpolate(SQLite::StepResult& step);
    Total row() const;

    SQLite::Query m_Rows;
};

}  // namespace service
