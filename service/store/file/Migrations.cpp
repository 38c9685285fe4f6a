// SPDX-License-Identifier: GPL-3.0-or-later
#include "service/store/file/Migrations.h"

#include <array>
#include <cstddef>

#include "libs/sqlite/Database.h"
#include "libs/sqlite/Query.h"
#include "libs/sqlite/Transaction.h"
#include "service/store/connections/ConnectionBlocks.h"

namespace service {

namespace {

/** Step n makes version n + 1 out of version n. A step that was ever released is never changed. */
constexpr std::array migrations = {
    // All moments are seconds of UTC, all addresses blobs (see Columns.h).
    //
    // counting: since when bytes are counted, the latest moment that was written, the ids to go on with; one row.
    // series: cumulative bytes of an application (0: all of them) in a protocol class, a row for each moment at
    //   which they changed. A total up to a moment is the last row at or before it.
    // connections: `life` is the number of bits in the seconds from start to end. Whoever looks for those that
    //   live in a range asks life by life for those that started at most 2^life seconds before it, and so reads
    //   about what belongs to the answer, however long the history. Those that are open have a life of their own
    //   beyond the others, whatever their `ended` says, so that a quiet one lasts without being written. The
    //   indexes hold all that such a question needs.
    R"sql(
        PRAGMA application_id = 0x4e764d74;
        CREATE TABLE counting (
            only_row INTEGER PRIMARY KEY CHECK (only_row = 1),
            start INTEGER NOT NULL,
            latest INTEGER NOT NULL,
            next_application INTEGER NOT NULL,
            next_connection INTEGER NOT NULL
        ) STRICT;
        CREATE TABLE applications (
            id INTEGER PRIMARY KEY,
            path TEXT NOT NULL UNIQUE,
            name TEXT NOT NULL,
            first_seen INTEGER NOT NULL,
            last_seen INTEGER NOT NULL
        ) STRICT;
        CREATE TABLE series (
            application INTEGER NOT NULL,
            class INTEGER NOT NULL,
            moment INTEGER NOT NULL,
            received INTEGER NOT NULL,
            sent INTEGER NOT NULL,
            PRIMARY KEY (application, class, moment)
        ) STRICT, WITHOUT ROWID;
        CREATE TABLE connections (
            id INTEGER PRIMARY KEY,
            application INTEGER NOT NULL,
            started INTEGER NOT NULL,
            ended INTEGER NOT NULL,
            life INTEGER NOT NULL,
            direction INTEGER NOT NULL,
            domain INTEGER NOT NULL,
            type INTEGER NOT NULL,
            protocol INTEGER NOT NULL,
            received INTEGER NOT NULL,
            sent INTEGER NOT NULL,
            remote BLOB NOT NULL,
            local BLOB NOT NULL
        ) STRICT;
        CREATE INDEX connections_by_time ON connections (life, started, ended, protocol);
        CREATE INDEX connections_by_application ON connections (application, life, started, ended, protocol);
    )sql",
    // trusted, credible_from: the present by which the history ages, see TrustedPresent.h. A history that does not
    //   tell whether its clock was right is trusted after a day, as a new one is.
    // kept_since: what was before is dropped. Readers obey it at once, the rows go by and by, see Pruner.h.
    R"sql(
        ALTER TABLE counting ADD COLUMN trusted INTEGER NOT NULL DEFAULT 0;
        ALTER TABLE counting ADD COLUMN credible_from INTEGER NOT NULL DEFAULT 0;
        ALTER TABLE counting ADD COLUMN kept_since INTEGER NOT NULL DEFAULT 0;
        UPDATE counting SET credible_from = latest + 86400;
    )sql",
    // received, sent: bytes at the IP layer from here on, and the payload beside them. What was counted before was
    //   payload, so there both are the same.
    // thinned_...: up to where the series are coarse, see SeriesGrain.h.
    R"sql(
        ALTER TABLE series ADD COLUMN payload_received INTEGER NOT NULL DEFAULT 0;
        ALTER TABLE series ADD COLUMN payload_sent INTEGER NOT NULL DEFAULT 0;
        UPDATE series SET payload_received = received, payload_sent = sent;
        ALTER TABLE connections ADD COLUMN payload_received INTEGER NOT NULL DEFAULT 0;
        ALTER TABLE connections ADD COLUMN payload_sent INTEGER NOT NULL DEFAULT 0;
        UPDATE connections SET payload_received = received, payload_sent = sent;
        ALTER TABLE counting ADD COLUMN thinned_tens INTEGER NOT NULL DEFAULT 0;
        ALTER TABLE counting ADD COLUMN thinned_minutes INTEGER NOT NULL DEFAULT 0;
        ALTER TABLE counting ADD COLUMN thinned_hours INTEGER NOT NULL DEFAULT 0;
    )sql",
    // connection_blocks and its columns: what lists of connections are filtered and sorted by, instead of the
    //   indexes, see ConnectionBlocks.h. A block stands for 256 ids; `slots` tells which of them it holds.
    // life: whether a connection is open or in its block, see Columns.h. Lists look into the rows of those that
    //   stand apart; the others are taken in by code below.
    R"sql(
        DROP INDEX connections_by_time;
        DROP INDEX connections_by_application;
        CREATE INDEX connections_apart ON connections (life) WHERE life >= 33;
        CREATE TABLE connection_blocks (
            block INTEGER PRIMARY KEY,
            slots BLOB NOT NULL,
            first_started INTEGER NOT NULL,
            last_started INTEGER NOT NULL,
            first_ended INTEGER NOT NULL,
            last_ended INTEGER NOT NULL
        ) STRICT;
        CREATE TABLE connection_times (block INTEGER PRIMARY KEY, numbers BLOB NOT NULL) STRICT;
        CREATE TABLE connection_kinds (block INTEGER PRIMARY KEY, numbers BLOB NOT NULL) STRICT;
        CREATE TABLE connection_received (block INTEGER PRIMARY KEY, numbers BLOB NOT NULL) STRICT;
        CREATE TABLE connection_sent (block INTEGER PRIMARY KEY, numbers BLOB NOT NULL) STRICT;
        CREATE TABLE connection_local (block INTEGER PRIMARY KEY, numbers BLOB NOT NULL) STRICT;
        CREATE TABLE connection_remote (block INTEGER PRIMARY KEY, numbers BLOB NOT NULL) STRICT;
    )sql",
};

/** The version whose connections have no blocks yet. */
constexpr int versionBeforeBlocks = 3;

constexpr int currentVersion = static_cast<int>(migrations.size());

/** The mark of our databases, "NvMt", or nothing in it at all. */
constexpr char selectIsOurs[] =
    "SELECT application_id = 0x4e764d74 OR (application_id = 0 AND NOT EXISTS (SELECT * FROM sqlite_schema)) "
    "FROM pragma_application_id";

int versionOf(SQLite::Database& database) {
    SQLite::Query query(database, "PRAGMA user_version");
    return query.Step() == SQLite::StepResult::Row ? query.GetColumnAsInt(0) : -1;
}

/** All steps in one transaction: what fails half-way leaves the database as it was. */
bool applySteps(SQLite::Database& database, int version, std::string& error) {
    SQLite::Transaction transaction(database);
    bool applied = transaction.IsActive();
    for (; applied && version < currentVersion; ++version) {
        error = "step " + std::to_string(version + 1) + ": ";
        applied = database.Execute(migrations[static_cast<std::size_t>(version)]) &&
                  (version != versionBeforeBlocks || ConnectionBlocks::takeInAll(database));
    }
    if (applied && database.Execute("PRAGMA user_version = " + std::to_string(currentVersion)) &&
        transaction.Commit()) {
        return true;
    }
    error += database.GetLastError();
    return false;
}

}  // namespace

bool migrate(SQLite::Database& database, std::string& error) {
    const int version = versionOf(database);
    SQLite::Query isOurs(database, selectIsOurs);
    if (version < 0 || isOurs.Step() != SQLite::StepResult::Row) {
        error = database.GetLastError();
        return false;
    }
    if (isOurs.GetColumnAsInt(0) == 0) {
        error = "it is another program's";
        return false;
    }
    isOurs.Reset();
    if (version > currentVersion) {
        error = "it was written by a later version of this program";
        return false;
    }
    // Lets the file shrink: a new one from its first transaction on, so this cannot be a step; an older one from its
    // next VACUUM on. It adds a thousandth to the file and a twentieth to the time of an append.
    if (!database.Execute("PRAGMA auto_vacuum = INCREMENTAL")) {
        error = database.GetLastError();
        return false;
    }
    return version == currentVersion || applySteps(database, version, error);
}

}  // namespace service
