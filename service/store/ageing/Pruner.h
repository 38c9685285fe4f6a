// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <optional>

#include "libs/sqlite/Database.h"
#include "libs/sqlite/Query.h"
#include "service/ledger/Records.h"
#include "service/store/connections/ConnectionBlocks.h"
#include "service/traffic/Moment.h"

namespace service {

/**
 * Deletes what stands before the moment since which the history is kept, and gives its space back to the disk, in
 * small steps. Readers clamp their questions to that moment, so to them nothing changes from step to step, and an
 * interrupted job is finished by a new one. For the thread of its database.
 */
class Pruner {
  public:
    /** `blocks` must outlive the pruner. */
    Pruner(SQLite::Database& database, ConnectionBlocks& blocks);

    bool isValid() const;

    /** Begins a job, in place of one that may be under way. */
    void begin();

    /** Whether there is no job, or it has ended. */
    bool isDone() const { return m_Phase == Phase::Done; }

    /** Whether the job has made the file smaller, as soon as the log is in it. */
    bool hasShrunkFile() const { return m_FreePages != notCounted; }

    /**
     * A part of the job, of some 20 ms: what stands before `keptSince` is to go. Within a transaction that the
     * caller has begun; when it is not committed, or this is false, the job has to begin again.
     */
    bool step(Moment keptSince);

  private:
    enum class Phase { Series, Connections, Space, Done };

    static constexpr std::int64_t notCounted = -1;

    bool doPortion(Moment keptSince);
    bool dropSeriesRows(Moment keptSince);
    bool dropConnectionRows(Moment keptSince);
    bool shrinkFile();

    ConnectionBlocks& m_Blocks;
    SQLite::Query m_FindSeries;
    SQLite::Query m_DropSeries;
    SQLite::Query m_CountPages;
    SQLite::Query m_ShrinkFile;

    Phase m_Phase = Phase::Done;
    ApplicationId m_Application = 0;        ///< the series of those before it are done
    std::optional<std::int32_t> m_Block;    ///< the next of the connections' blocks
    std::int64_t m_FreePages = notCounted;  ///< before the last portion that shrank the file
};

}  // namespace service
