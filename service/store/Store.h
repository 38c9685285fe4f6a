// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <unordered_map>

#include "libs/sqlite/Database.h"
#include "libs/sqlite/Query.h"
#include "service/ledger/Records.h"
#include "service/store/ageing/Pruner.h"
#include "service/store/ageing/Thinner.h"
#include "service/store/ageing/TrustedPresent.h"
#include "service/store/connections/ConnectionBlocks.h"
#include "service/store/file/FileLock.h"
#include "service/store/series/SeriesGrain.h"
#include "service/store/series/SeriesReader.h"
#include "service/store/series/SeriesWriter.h"
#include "service/traffic/Moment.h"

namespace service {

/**
 * The history on disk, written by one thread of one process. SQLite in WAL mode: readers have connections of
 * their own. What the tables hold is told in `Migrations.cpp`.
 */
class Store {
  public:
    /**
     * Opens or makes the database, bringing an older one up to date; a damaged one is set aside, with a line in the
     * log, and a new one made. Null with the reason in `error`, also when another daemon has it open.
     */
    static std::unique_ptr<Store> open(const std::string& path, std::string& error);

    Store(const Store&) = delete;
    Store& operator=(const Store&) = delete;

    /**
     * What the last run left; for a new database an empty state that starts at `now`. Connections that were left
     * open ended at the last moment that was written. Nothing when the disk fails: see `lastError`.
     */
    std::optional<LedgerState> load(Moment now);

    /** Appends one second's changes in one transaction. False when the disk would not take them: nothing is
     * written. */
    bool append(const LedgerChanges& changes);

    /** The present by which the history ages; may be ahead of a clock that was set right, until the next `append`. */
    Moment present() const { return m_Progress.present.moment(); }

    /**
     * Drops what is older than `retention` before the present, or before `now` where that is earlier, for good:
     * readers see none of it any more. The rows themselves go with `prune`. Without a retention, or with one of no
     * day, only what was dropped before is to go. False when the disk would not take it.
     */
    bool beginPruning(Moment now, std::optional<std::chrono::days> retention);

    /** Whether there is nothing left of what was dropped, or no pruning has begun. */
    bool isPruned() const { return m_Pruner.isDone(); }

    /** A small step of the pruning. False when the disk would not take it; it can be tried again. */
    bool prune();

    /** Whether the series are as coarse as their age by the present, or by `now` where that is earlier, allows. */
    bool isThinned(Moment now) const;

    /** A small step towards that. False when the disk would not take it; it can be tried again. */
    bool thin(Moment now);

    /**
     * Lays the file out anew after a wipe, as small as it can be. Where the disk refuses, pruning is to do it.
     * Waits for no reader: see `cutLog`.
     */
    void giveSpaceBack();

    /**
     * At the start, and whenever much was erased, cuts the file and its log to what they hold, unless some reader
     * still looks at what was erased: then it is to be called again. Does nothing once that is done.
     */
    void cutLog();

    /** Why the last of the above, or the last commit of a batch, failed. */
    const std::string& lastError() const { return m_LastError; }

  private:
    friend class StoreBatch;

    /** How far the series have got: what a row has to differ from to be worth writing. */
    struct Progress {
        std::unordered_map<ApplicationId, Counters> written;
        Moment latest;  ///< of all rows
        TrustedPresent present;
        Moment keptSince;  ///< what was before is dropped
        SeriesGrains grains;
    };

    explicit Store(std::unique_ptr<SQLite::Database> database);

    static std::unique_ptr<Store> openLocked(const std::string& path, std::string& error);

    bool isValid() const;
    bool fail();
    bool readProgress();
    bool readMoments();
    bool closeLeftovers();
    bool readCounting(LedgerState& state);
    bool readApplications(LedgerState& state);

    // Within a transaction that the caller has begun:
    bool write(const LedgerChanges& changes, Progress& progress);
    bool writeCounting(const LedgerChanges& changes, const Progress& progress);
    bool writeApplication(const ApplicationRecord& application);
    bool writeConnection(const ConnectionRecord& connection);
    bool writeSeries(ApplicationId application, const Counters& counters, Progress& progress);
    bool eraseEverything();

    std::unique_ptr<FileLock> m_Lock;
    std::unique_ptr<SQLite::Database> m_Database;
    SeriesReader m_Series;
    SeriesWriter m_SeriesWriter;
    SQLite::Query m_WriteCounting;
    SQLite::Query m_WriteApplication;
    SQLite::Query m_WriteConnection;
    SQLite::Query m_WriteKeptSince;
    ConnectionBlocks m_Blocks;
    Pruner m_Pruner;
    Thinner m_Thinner;
    Progress m_Progress;
    bool m_LogIsCut = false;  ///< the last run may have ended before it was
    std::string m_LastError;
};

}  // namespace service
