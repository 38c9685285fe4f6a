// SPDX-License-Identifier: GPL-3.0-or-later
#include <random>

#include "service/demo/DemoHistory.h"
#include "service/store/Housekeeper.h"
#include "service/store/columns/Columns.h"
#include "tests/service/store/StoreFixture.h"

namespace service {

namespace {

using namespace std::chrono;

constexpr DemoScene scene{.present = Moment(seconds(1'763'720'123)), .utcOffset = {}};
constexpr Moment cut = floor<hours>(scene.present - days(30));
constexpr char rows[] = "SELECT id, application, started, ended, received, sent, remote FROM connections";
constexpr char oldRows[] =
    "SELECT id, application, started, ended, received, sent, remote FROM old.connections";
constexpr char none[] = "0 too many, 0 too few";

/** Undoes what later versions have added. */
constexpr char makeVersion1[] =
    "ALTER TABLE counting DROP COLUMN trusted; ALTER TABLE counting DROP COLUMN credible_from;"
    "ALTER TABLE counting DROP COLUMN kept_since; ALTER TABLE counting DROP COLUMN thinned_tens;"
    "ALTER TABLE counting DROP COLUMN thinned_minutes; ALTER TABLE counting DROP COLUMN thinned_hours;"
    "ALTER TABLE series DROP COLUMN payload_received; ALTER TABLE series DROP COLUMN payload_sent;"
    "ALTER TABLE connections DROP COLUMN payload_received; ALTER TABLE connections DROP COLUMN payload_sent;"
    "PRAGMA user_version = 1;"
    "PRAGMA auto_vacuum = NONE; VACUUM;";

}  // namespace

class RetentionTest : public StoreFixture {
  protected:
    static void finish(Housekeeper& keeper) {
        while (keeper.hasWork()) {
            keeper.work();
        }
    }

    /** Goes on, at once, with what would be on disk if the daemon had been killed. */
    void killAndRestart() {
        const auto before = path;
        path += "+";
        std::filesystem::copy_file(before, path);
        std::filesystem::copy_file(before.string() + "-wal", path.string() + "-wal");
        reopen();
        std::filesystem::remove(before);
    }

    /** Writes at these moments that nothing moved. */
    void lapse(Moment from, Moment to, seconds step) {
        LedgerChanges changes;
        changes.totals.start = at(0);
        for (changes.moment = from; changes.moment <= to; changes.moment += step) {
            ASSERT_TRUE(store->append(changes)) << store->lastError();
        }
    }

    /** The rows in only one of two results, as text; ?1 is the cut, ?2 the present, `old` the database before. */
    std::string difference(const std::string& actual, const std::string& expected) {
        SQLite::Database database;
        EXPECT_TRUE(database.Open(path, SQLite::OpenMode::ReadOnly) &&
                    database.Execute("ATTACH '" + oldPath() + "' AS old"));
        SQLite::Query count(database, "SELECT (SELECT count(*) FROM (" + actual + " EXCEPT " + expected +
                                          ")) || ' too many, ' || (SELECT count(*) FROM (" + expected +
                                          " EXCEPT " + actual + ")) || ' too few'");
        count.BindAll(toColumn(cut), toColumn(scene.present));
        EXPECT_EQ(count.Step(), SQLite::StepResult::Row) << count.GetLastError();
        return count.GetColumnAsString(0);
    }

    std::string oldPath() const { return folder / "old.db"; }
};

TEST_F(RetentionTest, FromAYearToAMonthDropsExactlyWhatIsOlderWhateverInterruptsIt) {
    ASSERT_TRUE(writeDemoHistory(*store, scene));
    Ledger ledger(store->load(scene.present).value());
    const auto append = [&](std::uint64_t key, Moment now) {
        ledger.apply({sampleOf(key, "/new", {10, 0})}, now);
        ASSERT_TRUE(store->append(ledger.takeChanges(now))) << store->lastError();
    };
    append(1, scene.present);
    store.reset();
    interfere("UPDATE connections SET started = 0, ended = 0 WHERE life = 33");  // open, and quiet for long
    interfere(std::string(undoBlocks) + makeVersion1);
    interfere("VACUUM INTO '" + oldPath() + "'");
    reopen();
    store.reset();
    interfere("UPDATE counting SET trusted = latest");
    reopen();
    const auto sizeBefore = std::filesystem::file_size(path);

    Housekeeper year(*store);
    year.setRetention(days(366));
    finish(year);
    EXPECT_EQ(difference("SELECT * FROM connections", "SELECT *, received, sent FROM old.connections"), none);
    EXPECT_EQ(difference("SELECT * FROM series", "SELECT *, received, sent FROM old.series"), none);

    ASSERT_TRUE(store->beginPruning(store->present(), days(30)));
    int kills = 0;
    for (bool hasWork = true; hasWork; ++kills) {
        Housekeeper keeper(*store);  // whatever the retention may be by now, what was begun is ended
        keeper.work();
        keeper.work();
        hasWork = !store->isPruned();
        killAndRestart();
        append(2, scene.present + seconds(kills + 1));
    }
    EXPECT_GT(kills, 2);
    EXPECT_EQ(difference("SELECT * FROM connections WHERE id <= (SELECT max(id) FROM old.connections)",
                         "SELECT *, received, sent FROM old.connections WHERE ended >= ?1 OR life = 33"),
              none);
    EXPECT_EQ(difference("SELECT * FROM series WHERE moment <= ?2",
                         "SELECT *, received, sent FROM old.series AS row WHERE NOT EXISTS (SELECT * FROM "
                         "old.series WHERE "
                         "application = row.application AND class = row.class AND moment > row.moment "
                         "AND moment <= ?1)"),
              none);
    EXPECT_EQ(difference("SELECT id, path, first_seen FROM applications",
                         "SELECT id, path, first_seen FROM old.applications"),
              none);
    SQLite::Database database;
    ASSERT_TRUE(database.Open(path, SQLite::OpenMode::ReadOnly));
    SQLite::Query left(database, "SELECT id FROM connections ORDER BY id");
    ConnectionQuery everything;
    everything.to = Moment::max();
    for (const ConnectionId id : reader()->connections(everything)) {
        ASSERT_EQ(left.Step(), SQLite::StepResult::Row);
        ASSERT_EQ(id, left.GetColumnAsInt(0));
    }
    EXPECT_EQ(left.Step(), SQLite::StepResult::Done);
    database.Close();
    reopen();  // brings the log into the database
    RecordProperty("BytesBefore", std::to_string(sizeBefore));
    RecordProperty("BytesAfter", std::to_string(std::filesystem::file_size(path)));
    EXPECT_LT(std::filesystem::file_size(path), sizeBefore / 5);
}

TEST_F(RetentionTest, TotalsSinceTheCutAreUnchangedAndThoseBeforeItAreWhatTheyWereThen) {
    ASSERT_TRUE(writeDemoHistory(*store, scene));
    interfere("VACUUM INTO '" + oldPath() + "'");
    std::string error;
    const auto before = HistoryReader::open(oldPath(), error);
    const auto after = reader();
    const int applicationCount = static_cast<int>(store->load(scene.present)->applications.size());
    std::mt19937 random(5);
    const auto compare = [&](int rounds) {
        for (int i = 0; i < rounds; ++i) {
            Moment moment = scene.present - seconds(random() % (86'400 * (i % 2 == 0 ? 30 : 400)));
            if (i % 3 == 0) {
                moment = floor<hours>(moment);
            }
            for (const auto protocolClass : {ProtocolClass::Tcp, ProtocolClass::Udp, ProtocolClass::Other}) {
                ByteCount sum;
                for (ApplicationId id = 1; id <= applicationCount; ++id) {
                    const ByteCount total = after->totalUpTo(id, protocolClass, moment);
                    ASSERT_EQ(total, before->totalUpTo(id, protocolClass, std::max(moment, cut)));
                    sum += total;
                }
                const ByteCount all = after->totalUpTo({}, protocolClass, moment);
                ASSERT_LE(sum.received, all.received);
                ASSERT_GE(sum.received, all.received - (i % 3 == 0 ? 0 : applicationCount))
                    << "less what is rounded";
            }
        }
    };
    ASSERT_TRUE(store->beginPruning(store->present(), days(30)));
    while (!store->isPruned()) {
        compare(1);  // also half-way, at any step
        ASSERT_TRUE(store->prune()) << store->lastError();
    }
    compare(200);
}

TEST_F(RetentionTest, AWrongClockAgesNothing) {
    const auto day = [](int number) { return at(number * 86'400); };
    lapse(at(0), day(2), minutes(1));
    EXPECT_EQ(store->present(), day(2));
    lapse(day(4'000), day(4'000) + hours(20), minutes(10));  // far ahead, until the network corrects it
    EXPECT_EQ(store->present(), day(2));
    reopen();
    lapse(day(-9'000), day(-9'000), seconds(1));  // as far behind
    EXPECT_EQ(store->present(), day(2));
    lapse(day(2) + hours(21), day(3), minutes(1));
    EXPECT_EQ(store->present(), day(3));

    lapse(day(100), day(100) + hours(23), hours(1));  // the machine was in a drawer
    EXPECT_EQ(store->present(), day(3));
    reopen();
    lapse(day(101), day(102), hours(1));
    EXPECT_EQ(store->present(), day(102) - hours(1)) << "one step behind, as each is a leap";

    lapse(day(5'000), day(5'002), hours(1));  // wrong for longer than anything can tell
    ASSERT_TRUE(store->beginPruning(store->present(), days(30)));
    Ledger ledger(store->load(at(0)).value());
    for (const Moment now : {day(103), day(104)}) {
        ledger.apply({sampleOf(1, "/a", {10, 0}, true)}, now);
        ASSERT_TRUE(store->append(ledger.takeChanges(now)));
    }
    EXPECT_EQ(reader()->totalUpTo({}, {}, day(103)).received, 10) << "the history goes on all the same";
    ConnectionQuery query;
    query.to = day(103);
    EXPECT_EQ(reader()->connections(query).size(), 2u);
}

TEST_F(RetentionTest, APresentAheadOfTheClockDropsNothing) {
    ASSERT_TRUE(writeDemoHistory(*store, scene));
    store.reset();
    interfere("VACUUM INTO '" + oldPath() + "'");
    interfere("UPDATE counting SET latest = latest + 63072000, trusted = latest + 63072000");  // two years
    reopen();
    const auto prune = [this](Moment now, days retention) {
        Housekeeper keeper(*store, [now] { return now; });
        keeper.setRetention(retention);
        finish(keeper);
    };
    prune(Moment(), days(30));  // the clock may as well be behind
    prune(scene.present, days(0));
    prune(scene.present, days(-1));
    EXPECT_EQ(difference(rows, oldRows), none);
    prune(scene.present, days(30));
    EXPECT_EQ(difference(rows, std::string(oldRows) + " WHERE ended >= ?1"), none);
}

TEST_F(RetentionTest, AHistoryOfAnEarlierVersionAgesOnceTheClockHasLastedForADay) {
    const Moment ahead = at(0) + years(2);
    lapse(ahead, ahead, minutes(1));
    store.reset();
    interfere(std::string(undoBlocks) + makeVersion1);
    reopen();
    lapse(ahead, ahead + hours(20), minutes(1));
    EXPECT_LE(store->present(), at(0)) << "the clock may still be wrong";
    lapse(at(0), at(0) + days(2), minutes(1));
    EXPECT_EQ(store->present(), at(0) + days(2));
}

TEST_F(RetentionTest, AWipeEndsThePruning) {
    lapse(at(0), at(0) + days(100), hours(1));
    ASSERT_TRUE(store->beginPruning(store->present(), days(30)) && store->prune());
    LedgerChanges changes;
    changes.moment = at(0) + days(100);
    changes.wiped = true;
    ConnectionRecord connection;
    connection.id = 1;
    connection.start = at(0);
    connection.end = at(1);
    changes.connections = {connection};
    ASSERT_TRUE(store->append(changes));
    while (!store->isPruned()) {
        ASSERT_TRUE(store->prune());
    }
    ConnectionQuery query;
    query.to = at(1);
    EXPECT_EQ(reader()->connections(query).size(), 1u);
}

}  // namespace service
