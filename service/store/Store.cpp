// SPDX-License-Identifier: GPL-3.0-or-later
#include "service/store/Store.h"

#include <algorithm>
#include <chrono>
#include <system_error>
#include <utility>

#include "libs/sqlite/Transaction.h"
#include "service/log/Log.h"
#include "service/store/StoreBatch.h"
#include "service/store/columns/Columns.h"
#include "service/store/file/DamagedDatabase.h"
#include "service/store/file/DatabaseFile.h"

namespace service {

namespace {

/** By how much the clock may be set back while the series only wait for it. */
constexpr std::chrono::minutes longestWait{1};

/** A clock that is before this program was written is wrong. */
constexpr Moment earliestPresent = std::chrono::sys_days(std::chrono::year(2026) / 1 / 1);

/**
 * Whether the clock was ahead when the latest rows were written. A clock that says it is before the counting began
 * is the one that is wrong, as on a machine that starts in 1970 until it asks the network: the history waits. Unless
 * the counting itself began with a clock that was never trusted: the history could wait for years.
 */
bool isPastFuture(const LedgerChanges& changes, Moment latest, const TrustedPresent& present) {
    const Moment start = changes.totals.start;
    const bool beganInFuture = present.moment() < start && changes.moment >= earliestPresent;
    return (changes.moment >= start || beganInFuture) && latest - changes.moment > longestWait;
}

}  // namespace

std::unique_ptr<Store> Store::open(const std::string& path, std::string& error) {
    const auto failed = [&](const std::string& reason) {
        error = "cannot open database " + path + ": " + reason;
        return nullptr;
    };
    std::error_code failure;
    const std::string resolvedPath = DatabaseFile::realPath(path, failure);
    if (failure) {
        return failed(failure.message());
    }
    auto lock = std::make_unique<FileLock>(resolvedPath + ".lock");
    if (!lock->isHeld()) {
        return failed(lock->error());
    }
    const DamagedDatabase damage(resolvedPath, !lock->isNew());
    std::string reason;
    std::unique_ptr<Store> store = damage.isNoted() ? nullptr : openLocked(resolvedPath, reason);
    if (!store && (!damage.isConfirmed() || damage.setAside(reason))) {
        store = openLocked(resolvedPath, reason);
    }
    if (!store) {
        lock->removeIfNew();
        return failed(reason);
    }
    damage.removeNote();
    store->m_Lock = std::move(lock);
    return store;
}

/** Tries, and undoes, all that the daemon cannot begin without. */
std::unique_ptr<Store> Store::openLocked(const std::string& path, std::string& error) {
    auto database = DatabaseFile::open(path, error);
    if (!database) {
        return nullptr;
    }
    std::unique_ptr<Store> store(new Store(std::move(database)));
    if (!store->isValid()) {
        error = "its tables are not as they should be";
        return nullptr;
    }
    const SQLite::Transaction trial(*store->m_Database);
    if (!store->readProgress() || !store->load(Moment())) {
        error = store->m_LastError;
        return nullptr;
    }
    return store;
}

Store::Store(std::unique_ptr<SQLite::Database> database)
    : m_Database(std::move(database)),
      m_Series(*m_Database),
      m_SeriesWriter(*m_Database),
      m_WriteCounting(
          *m_Database,
          "INSERT OR REPLACE INTO counting (only_row, start, latest, next_application, "
          "next_connection, trusted, credible_from, kept_since, thinned_tens, thinned_minutes, "
          "thinned_hours) "
          // The ledger of a count that began with a clock ahead goes on to tell of that beginning.
          "VALUES (1, min(?1, ?2, coalesce((SELECT start FROM counting), ?1)), ?2, ?3, ?4, ?5, ?6, ?7, ?8, "
          "?9, ?10)"),
      m_WriteApplication(
          *m_Database,
          "INSERT INTO applications (id, path, name, first_seen, last_seen) "
          "VALUES (?1, ?2, ?3, ?4, ?5) "
          "ON CONFLICT (id) DO UPDATE SET name = excluded.name, last_seen = excluded.last_seen"),
      m_WriteConnection(
          *m_Database,
          "INSERT INTO connections (id, application, started, ended, life, direction, domain, type, "
          "protocol, received, sent, remote, local, payload_received, payload_sent) "
          "VALUES (?1, ?2, ?3, ?4, ?5, ?6, ?7, ?8, ?9, ?10, ?11, ?12, ?13, ?14, ?15) "
          "ON CONFLICT (id) DO UPDATE SET application = excluded.application, "
          "ended = excluded.ended, life = excluded.life, received = excluded.received, "
          "sent = excluded.sent, payload_received = excluded.payload_received, "
          "payload_sent = excluded.payload_sent"),
      m_WriteKeptSince(*m_Database, "UPDATE counting SET kept_since = ?1"),
      m_Blocks(*m_Database),
      m_Pruner(*m_Database, m_Blocks),
      m_Thinner(*m_Database) {}

bool Store::isValid() const {
    return m_Series.isValid() && m_WriteCounting.IsValid() && m_WriteApplication.IsValid() &&
           m_WriteConnection.IsValid() && m_SeriesWriter.isValid() && m_WriteKeptSince.IsValid() &&
           m_Blocks.isValid() && m_Pruner.isValid() && m_Thinner.isValid();
}

/** Keeps the reason, before the end of another statement clears it. */
bool Store::fail() {
    m_LastError = m_Database->GetLastError();
    if (m_Database->IsDamaged()) {
        m_LastError += "; the database is checked at the next start";
        DamagedDatabase(m_Database->GetPath(), true).note();
    }
    return false;
}

// A counter that could not be read must not pass for zero: the totals would sink and their rows be overwritten.
bool Store::readProgress() {
    SQLite::Query ids(*m_Database, "SELECT ?1 UNION ALL SELECT id FROM applications");
    ids.Bind(1, allApplications);
    SQLite::StepResult result = ids.Step();
    for (; result == SQLite::StepResult::Row; result = ids.Step()) {
        const ApplicationId id = ids.GetColumnAsInt(0);
        const std::optional<Counters> written = m_Series.upTo(id, Moment::max());
        if (!written) {
            return fail();
        }
        m_Progress.written[id] = *written;
    }
    return (result == SQLite::StepResult::Done && readMoments()) || fail();
}

bool Store::readMoments() {
    SQLite::Query row(*m_Database,
                      "SELECT latest, trusted, credible_from, kept_since, thinned_tens, thinned_minutes, "
                      "thinned_hours FROM counting");
    const SQLite::StepResult result = row.Step();
    if (result == SQLite::StepResult::Row) {
        const auto moment = [&](int column) { return momentFromColumn(row.GetColumnAsInt64(column)); };
        m_Progress.latest = moment(0);
        m_Progress.present = TrustedPresent(moment(1), moment(2));
        m_Progress.keptSince = moment(3);
        m_Progress.grains.until = {moment(4), moment(5), moment(6)};
    }
    return result != SQLite::StepResult::Failed;
}

bool Store::closeLeftovers() {
    SQLite::Query close(*m_Database,
                        "UPDATE connections SET life = ?1, "
                        "ended = max(started, (SELECT latest FROM counting)) WHERE life >= 33 AND life = ?2");
    return close.Execute(closedLife, openLife);
}

bool Store::readCounting(LedgerState& state) {
    SQLite::Query row(*m_Database, "SELECT start, next_application, next_connection FROM counting");
    const SQLite::StepResult result = row.Step();
    if (result == SQLite::StepResult::Row) {
        state.totals.start = momentFromColumn(row.GetColumnAsInt64(0));
        state.nextApplicationId = row.GetColumnAsInt(1);
        state.nextConnectionId = row.GetColumnAsInt(2);
    }
    return result != SQLite::StepResult::Failed;
}

bool Store::readApplications(LedgerState& state) {
    SQLite::Query rows(*m_Database,
                       "SELECT id, name, path, first_seen, last_seen FROM applications ORDER BY id");
    SQLite::StepResult result = rows.Step();
    for (; result == SQLite::StepResult::Row; result = rows.Step()) {
        const ApplicationId id = rows.GetColumnAsInt(0);
        state.applications.push_back({.id = id,
                                      .name = rows.GetColumnAsString(1),
                                      .path = rows.GetColumnAsString(2),
                                      .counters = m_Progress.written[id],
                                      .firstSeen = momentFromColumn(rows.GetColumnAsInt64(3)),
                                      .lastSeen = momentFromColumn(rows.GetColumnAsInt64(4))});
    }
    return result == SQLite::StepResult::Done;
}

std::optional<LedgerState> Store::load(Moment now) {
    LedgerState state;
    state.totals = {.counters = m_Progress.written[allApplications], .start = now};
    if (!closeLeftovers() || !readCounting(state) || !readApplications(state)) {
        fail();
        return std::nullopt;
    }
    return state;
}

bool Store::append(const LedgerChanges& changes) {
    StoreBatch batch(*this);
    return batch.append(changes) && batch.commit();
}

bool Store::beginPruning(Moment now, std::optional<std::chrono::days> retention) {
    const bool isLimited = retention && *retention > std::chrono::days(0);
    // On the hour, where all totals are known, however coarse the series are there.
    const Moment cut = isLimited
                           ? std::chrono::floor<std::chrono::hours>(std::min(present(), now) - *retention)
                           : m_Progress.keptSince;
    if (cut > m_Progress.keptSince) {
        if (!m_WriteKeptSince.Execute(toColumn(cut))) {
            return fail();
        }
        m_Progress.keptSince = cut;
    }
    m_Pruner.begin();
    return true;
}

bool Store::prune() {
    SQLite::Transaction transaction(*m_Database);
    if (!transaction.IsActive() || !m_Pruner.step(m_Progress.keptSince) || !transaction.Commit()) {
        m_Pruner.begin();
        return fail();
    }
    if (m_Pruner.isDone() && m_Pruner.hasShrunkFile()) {
        m_LogIsCut = false;
        cutLog();
    }
    return true;
}

bool Store::isThinned(Moment now) const {
    return !m_Thinner.isDue(std::min(present(), now));
}

bool Store::thin(Moment now) {
    SQLite::Transaction transaction(*m_Database);
    SeriesGrains grains = m_Progress.grains;
    if (!transaction.IsActive() || !m_Thinner.step(std::min(present(), now), m_Progress.keptSince, grains) ||
        !transaction.Commit()) {
        m_Thinner.restart();
        return fail();
    }
    m_Progress.grains = grains;
    return true;
}

bool Store::write(const LedgerChanges& changes, Progress& progress) {
    if (changes.wiped) {
        progress = {};
        if (!eraseEverything()) {
            return false;
        }
    }
    const Moment before = progress.latest;
    if (isPastFuture(changes, progress.latest, progress.present)) {
        if (!m_SeriesWriter.redate(changes.moment, progress.grains)) {
            return false;
        }
        progress.latest = changes.moment;
        progress.keptSince = std::min(progress.keptSince, changes.moment);
    }
    // Where the clock was set back a little the series wait on their latest moment, or a total would sink with time.
    progress.latest = std::max(progress.latest, changes.moment);
    progress.present.follow(before, progress.latest);
    const auto writeCounters = [&](const ApplicationRecord& application) {
        return writeApplication(application) && writeSeries(application.id, application.counters, progress);
    };
    const auto writeLife = [&](const ConnectionRecord& connection) { return writeConnection(connection); };
    return writeCounting(changes, progress) && std::ranges::all_of(changes.applications, writeCounters) &&
           std::ranges::all_of(changes.connections, writeLife) && m_Blocks.takeInClosed() &&
           writeSeries(allApplications, changes.totals.counters, progress);
}

bool Store::writeCounting(const LedgerChanges& changes, const Progress& progress) {
    return m_WriteCounting.Execute(toColumn(changes.totals.start), toColumn(progress.latest),
                                   changes.nextApplicationId, changes.nextConnectionId,
                                   toColumn(progress.present.moment()),
                                   toColumn(progress.present.credibleFrom()), toColumn(progress.keptSince),
                                   toColumn(progress.grains.until[0]), toColumn(progress.grains.until[1]),
                                   toColumn(progress.grains.until[2]));
}

bool Store::writeApplication(const ApplicationRecord& application) {
    return m_WriteApplication.Execute(application.id, application.path, application.name,
                                      toColumn(application.firstSeen), toColumn(application.lastSeen));
}

bool Store::writeConnection(const ConnectionRecord& connection) {
    return m_WriteConnection.Execute(
        connection.id, connection.applicationId, toColumn(connection.start), toColumn(connection.end),
        lifeColumn(connection), static_cast<int>(connection.direction), connection.socketDomain,
        connection.socketType, connection.socketProtocol, connection.bytes.received, connection.bytes.sent,
        toColumn(connection.remote), toColumn(connection.local), connection.payload.received,
        connection.payload.sent);
}

bool Store::writeSeries(ApplicationId application, const Counters& counters, Progress& progress) {
    return m_SeriesWriter.write(application, counters, progress.latest, progress.written[application]);
}

/** Whole tables without a condition go page by page: a million connections take a fifth of a second. */
bool Store::eraseEverything() {
    SQLite::Query tables(*m_Database,
                         "SELECT group_concat('DELETE FROM ' || name, ';') FROM sqlite_schema "
                         "WHERE type = 'table' AND name NOT LIKE 'sqlite%'");
    const bool isKnown = tables.Step() == SQLite::StepResult::Row;
    const std::string erase = tables.GetColumnAsString(0);
    tables.Reset();
    return isKnown && m_Database->Execute(erase);
}

void Store::giveSpaceBack() {
    if (!DatabaseFile::compact(*m_Database)) {
        logLine("store: the space of the erased history goes back by and by: ", m_Database->GetLastError());
        m_Pruner.begin();
    }
    m_LogIsCut = false;
    cutLog();
}

void Store::cutLog() {
    m_LogIsCut = m_LogIsCut || DatabaseFile::cutLog(*m_Database);
}

}  // namespace service
