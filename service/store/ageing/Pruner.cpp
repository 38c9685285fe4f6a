// SPDX-License-Identifier: GPL-3.0-or-later
#include "service/store/ageing/Pruner.h"

#include <chrono>
#include <string>

#include "service/store/columns/Columns.h"
#include "service/store/series/SeriesReader.h"

namespace service {

namespace {

/** An append waits for the step that is under way. */
constexpr std::chrono::milliseconds stepTime{20};

// What is done without a look at the clock: about a millisecond's work where the pages are in memory; of the
// connections it is a block.
constexpr int rowsPerSeriesPortion = 1000;  // they lie side by side
constexpr int pagesPerSpacePortion = 50;

/** Free pages are left to what comes next unless they are more than this part of the file. */
constexpr int pagesPerFreePage = 20;

/**
 * The first series from application ?1 on with rows before its baseline, which is its last row at or before ?2.
 * Costs two seeks for each series without such rows.
 */
constexpr char findSeries[] =
    "WITH ids (id) AS (SELECT ?3 UNION ALL SELECT id FROM applications), "
    "classes (class) AS (VALUES (0), (1), (2)), "
    "baselines (id, class, moment) AS (SELECT id, class, (SELECT max(moment) FROM series "
    "WHERE application = id AND series.class = classes.class AND moment <= ?2) "
    "FROM ids CROSS JOIN classes WHERE id >= ?1) "
    "SELECT * FROM baselines WHERE EXISTS (SELECT * FROM series WHERE application = baselines.id AND "
    "series.class = baselines.class AND series.moment < baselines.moment) LIMIT 1";

/** The oldest ?4 rows before ?3. */
constexpr char dropSeries[] =
    "DELETE FROM series WHERE application = ?1 AND class = ?2 AND moment < min(?3, coalesce(("
    "SELECT moment FROM series WHERE application = ?1 AND class = ?2 ORDER BY moment LIMIT 1 OFFSET ?4), "
    "?3))";

}  // namespace

Pruner::Pruner(SQLite::Database& database, ConnectionBlocks& blocks)
    : m_Blocks(blocks),
      m_FindSeries(database, findSeries),
      m_DropSeries(database, dropSeries),
      m_CountPages(database,
                   "SELECT freelist_count, page_count FROM pragma_freelist_count, pragma_page_count"),
      m_ShrinkFile(database, "PRAGMA incremental_vacuum(" + std::to_string(pagesPerSpacePortion) + ")") {}

bool Pruner::isValid() const {
    return m_FindSeries.IsValid() && m_DropSeries.IsValid() && m_CountPages.IsValid() &&
           m_ShrinkFile.IsValid();
}

void Pruner::begin() {
    m_Phase = Phase::Series;
    m_Application = allApplications;
    m_Block.reset();
    m_FreePages = notCounted;
}

bool Pruner::step(Moment keptSince) {
    const auto end = std::chrono::steady_clock::now() + stepTime;
    bool worked = true;
    while (worked && !isDone() && std::chrono::steady_clock::now() < end) {
        worked = doPortion(keptSince);
    }
    return worked;
}

bool Pruner::doPortion(Moment keptSince) {
    switch (m_Phase) {
        case Phase::Series:
            return dropSeriesRows(keptSince);
        case Phase::Connections:
            return dropConnectionRows(keptSince);
        case Phase::Space:
            return shrinkFile();
        case Phase::Done:
            break;
    }
    return true;
}

bool Pruner::dropSeriesRows(Moment keptSince) {
    m_FindSeries.BindAll(m_Application, toColumn(keptSince), allApplications);
    const SQLite::StepResult result = m_FindSeries.Step();
    if (result != SQLite::StepResult::Row) {
        m_FindSeries.Reset();
        m_Phase = result == SQLite::StepResult::Done ? Phase::Connections : m_Phase;
        return result == SQLite::StepResult::Done;
    }
    m_Application = m_FindSeries.GetColumnAsInt(0);
    const int protocolClass = m_FindSeries.GetColumnAsInt(1);
    const std::int64_t baseline = m_FindSeries.GetColumnAsInt64(2);
    m_FindSeries.Reset();
    return m_DropSeries.Execute(m_Application, protocolClass, baseline, rowsPerSeriesPortion);
}

bool Pruner::dropConnectionRows(Moment keptSince) {
    if (!m_Block) {
        m_Block = 0;
        return m_Blocks.takeInClosed(1);  // what has ended is looked for in the blocks
    }
    if (!m_Blocks.dropBefore(keptSince, m_Block)) {
        return false;
    }
    m_Phase = m_Block ? m_Phase : Phase::Space;
    return true;
}

bool Pruner::shrinkFile() {
    m_CountPages.Reset();
    if (m_CountPages.Step() != SQLite::StepResult::Row) {
        return false;
    }
    const std::int64_t freePages = m_CountPages.GetColumnAsInt64(0);
    const std::int64_t allPages = m_CountPages.GetColumnAsInt64(1);
    m_CountPages.Reset();
    const bool isWorthIt = freePages * pagesPerFreePage > allPages;
    const bool isStuck = freePages == m_FreePages;  // a file that could not be laid out for it
    if (isWorthIt && !isStuck) {
        m_FreePages = freePages;
        return m_ShrinkFile.Execute();
    }
    m_Phase = Phase::Done;
    return true;
}

}  // namespace service
