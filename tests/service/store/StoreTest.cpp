// SPDX-License-Identifier: GPL-3.0-or-later
#include "service/store/Store.h"

#include <algorithm>
#include <fstream>
#include <map>
#include <random>
#include <tuple>

#include "service/store/StoreBatch.h"
#include "tests/service/store/StoreFixture.h"

namespace service {

using StoreTest = StoreFixture;

namespace {

/** Of connections of three hundred applications. */
std::vector<TrafficSample> manySamples(std::uint64_t connections, ByteCount moved) {
    std::vector<TrafficSample> samples;
    for (std::uint64_t key = 0; key < connections; ++key) {
        samples.push_back(sampleOf(key, "/" + std::to_string(key % 300), moved));
    }
    return samples;
}

}  // namespace

TEST_F(StoreTest, TheNextRunGoesOnWhereTheLastOneEnded) {
    Ledger ledger(store->load(at(0)).value());
    write(ledger, {sampleOf(1, "/usr/bin/ä", {10, 1}), sampleOf(2, "", {5, 0})}, 1);
    TrafficSample renamed = sampleOf(2, "", {7, 7});
    renamed.application = std::make_shared<const ApplicationIdentity>(ApplicationIdentity{"", "kernel anew"});
    ledger.apply({renamed}, at(3));
    const LedgerChanges last = ledger.takeChanges(at(3));
    ASSERT_TRUE(store->append(last));

    reopen();
    const LedgerState state = store->load(at(99)).value();
    EXPECT_EQ(state.totals.start, at(0));
    EXPECT_EQ(state.totals.counters, ledger.totals().counters);
    EXPECT_EQ(state.nextConnectionId, last.nextConnectionId);
    const auto fields = [](const ApplicationRecord& row) {
        return std::tuple(row.id, row.name, row.path, row.counters.byClass, row.counters.payloadByClass,
                          row.firstSeen, row.lastSeen);
    };
    EXPECT_TRUE(std::ranges::equal(state.applications, ledger.applications(), {}, fields, fields));
    EXPECT_EQ(ledger.application(2)->name, "kernel anew");
    Ledger next(state);
    next.apply({sampleOf(1, "", {1, 0}), sampleOf(2, "/new", {1, 0})}, at(100));
    EXPECT_EQ(next.takeNewApplications(), std::vector<ApplicationId>{last.nextApplicationId});
    EXPECT_EQ(next.application(2)->counters.total(), (ByteCount{13, 7}));
}

TEST_F(StoreTest, EveryTotalUpToAMomentIsWhatWasCountedUntilThen) {
    std::mt19937 random(3);
    Ledger ledger(store->load(at(0)).value());
    std::map<Moment, std::vector<ApplicationRecord>> counted;
    for (int second = 1; second < 600; second += 1 + static_cast<int>(random() % 5)) {
        const int socketProtocol = std::array{6, 17, 132}[random() % 3];
        write(ledger, {sampleOf(random() % 9, std::to_string(random() % 4), {1, 2}, false, socketProtocol)},
              second);
        counted[at(second)] = ledger.applications();
        if (second % 100 == 50) {
            reopen();  // the store must know from the disk alone what it has written
        }
    }
    const auto history = reader();
    for (int second = 0; second < 610; ++second) {
        const auto after = counted.upper_bound(at(second));
        const auto applications =
            after == counted.begin() ? std::vector<ApplicationRecord>{} : std::prev(after)->second;
        ByteCount udp;
        ByteCount all;
        for (const ApplicationRecord& application : applications) {
            udp += application.counters[ProtocolClass::Udp];
            all += application.counters.total();
            ASSERT_EQ(history->totalUpTo(application.id, {}, at(second)), application.counters.total());
            ASSERT_EQ(history->totalUpTo(application.id, ProtocolClass::Other, at(second)),
                      application.counters[ProtocolClass::Other]);
        }
        ASSERT_EQ(history->totalUpTo({}, ProtocolClass::Udp, at(second)), udp);
        ASSERT_EQ(history->totalUpTo({}, {}, at(second)), all) << "at second " << second;
    }
}

TEST_F(StoreTest, OnlyAClassThatChangedGetsARow) {
    Ledger ledger(store->load(at(0)).value());
    write(ledger, {sampleOf(1, "/a", {1, 1}, true, 6)}, 1);
    write(ledger, {sampleOf(1, "/a", {1, 1}, true, 17)}, 2);
    reopen();
    write(ledger, {sampleOf(1, "/a", {1, 1}, true, 6)}, 3);

    SQLite::Database database;
    ASSERT_TRUE(database.Open(path, SQLite::OpenMode::ReadOnly));
    SQLite::Query rows(
        database,
        "SELECT group_concat(application || '/' || class || '@' || (moment - 1700000000), ' ') "
        "FROM (SELECT * FROM series ORDER BY application, class, moment)");
    ASSERT_EQ(rows.Step(), SQLite::StepResult::Row);
    EXPECT_EQ(rows.GetColumnAsString(0), "0/0@1 0/0@3 0/1@2 1/0@1 1/0@3 1/1@2");
}

TEST_F(StoreTest, TotalsDoNotSinkWhenTheClockIsSetBack) {
    Ledger ledger(store->load(at(0)).value());
    for (const int second : {100, 40, 101}) {
        write(ledger, {sampleOf(1, "/a", {10, 0})}, second);
        reopen();
    }
    const auto history = reader();
    EXPECT_EQ(history->totalUpTo(1, {}, at(99)).received, 0);
    EXPECT_EQ(history->totalUpTo(1, {}, at(100)).received, 20);
    EXPECT_EQ(history->totalUpTo({}, {}, at(101)).received, 30);
}

TEST_F(StoreTest, AClockThatWasAheadDoesNotHoldTheHistoryUp) {
    Ledger ledger(store->load(at(0)).value());
    for (const auto& [application, second] :
         {std::pair("/a", 1), {"/a", 1'000'000}, {"/b", 1'000'001}, {"/b", 50}, {"/b", 60}}) {
        write(ledger, {sampleOf(1, application, {10, 0})}, second);
    }
    const auto history = reader();
    for (const ApplicationId id : {1, allApplications}) {
        EXPECT_EQ(history->totalUpTo(id, {}, at(49)).received, 10);
    }
    EXPECT_EQ(history->totalUpTo(1, {}, at(50)).received, 20) << "counted in the future, though quiet since";
    EXPECT_EQ(history->totalUpTo({}, {}, at(50)).received, 40);
    EXPECT_EQ(history->totalUpTo({}, {}, at(60)).received, 50);
    EXPECT_EQ(history->totalUpTo({}, {}, at(2'000'000)).received, 50);

    write(ledger, {sampleOf(1, "/b", {10, 0})},
          -1'000);  // before the counting began: the clock is wrong now, not then
    EXPECT_EQ(history->totalUpTo({}, {}, at(59)).received, 40);
    EXPECT_EQ(history->totalUpTo({}, {}, at(60)).received, 60);
}

TEST_F(StoreTest, ACountThatBeganWithAClockAheadDoesNotWaitForItsBeginning) {
    constexpr int today = 80'000'000;  // of 2026
    const std::vector<TrafficSample> ten{sampleOf(1, "/a", {10, 0})};
    Ledger ahead(store->load(at(today + 30'000'000)).value());
    write(ahead, ten, today + 30'000'000);
    write(ahead, ten, today);
    write(ahead, ten, today + 100);
    EXPECT_EQ(reader()->totalUpTo({}, {}, at(today + 99)).received, 20);
    EXPECT_EQ(reader()->totalUpTo({}, {}, at(today + 100)).received, 30);

    reopen();
    const LedgerState state = store->load(at(today + 101)).value();
    EXPECT_EQ(state.totals.start, at(today));
    Ledger trusted(state);
    write(trusted, ten, today + 100'000);
    write(trusted, ten, today - 1'000);  // after a day of a right clock it is this one that is wrong
    EXPECT_EQ(reader()->totalUpTo({}, {}, at(today + 100)).received, 30);
    EXPECT_EQ(reader()->totalUpTo({}, {}, at(today + 100'000)).received, 50);
}

TEST_F(StoreTest, ABatchIsWrittenWholeOrNotAtAll) {
    Ledger ledger(store->load(at(0)).value());
    std::vector<LedgerChanges> seconds;
    for (const int second : {1, 2}) {
        ledger.apply({sampleOf(1, "/a", {10, 0})}, at(second));
        seconds.push_back(ledger.takeChanges(at(second)));
    }
    {
        StoreBatch givenUp(*store);
        EXPECT_TRUE(givenUp.append(seconds[0]) && givenUp.append(seconds[1]));
        EXPECT_EQ(reader()->totalUpTo({}, {}, at(2)).received, 0);
    }
    interfere(breakWrites);
    {
        StoreBatch broken(*store);
        EXPECT_FALSE(broken.append(seconds[0]));
        EXPECT_FALSE(broken.append({})) << "nothing may follow on what is missing";
        EXPECT_FALSE(broken.commit());
        EXPECT_EQ(store->lastError(), "broken on purpose");
    }
    interfere(mendWrites);
    EXPECT_EQ(reader()->totalUpTo({}, {}, at(2)).received, 0);
    StoreBatch batch(*store);
    EXPECT_TRUE(batch.append(seconds[0]) && batch.append(seconds[1]) && batch.commit());
    EXPECT_EQ(reader()->totalUpTo({}, {}, at(1)).received, 10);
    EXPECT_EQ(reader()->totalUpTo(1, {}, at(2)).received, 20);
}

TEST_F(StoreTest, AWipeLeavesNothingButTheIdsToGoOnWithAndGivesTheSpaceBack) {
    Ledger ledger(store->load(at(0)).value());
    const auto samples = manySamples(5000, {1, 1});
    write(ledger, samples, 1);
    reopen();  // brings the log into the database
    const auto sizeBefore = std::filesystem::file_size(path);
    const auto history = reader();
    SQLite::Database other;
    ASSERT_TRUE(other.Open(path, SQLite::OpenMode::ReadOnly) &&
                other.Execute("BEGIN; SELECT * FROM counting"));

    ledger.beginClearing(at(2));
    // As much as was counted before the wipe, to catch a store that thinks it has written that already.
    ledger.apply({sampleOf(1, "/new", {5000, 5000})}, at(3));
    ASSERT_TRUE(store->append(ledger.takeFresh(at(3))));
    const auto begin = std::chrono::steady_clock::now();
    store->giveSpaceBack();
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(2))
        << "readers are not waited for";
    other.Close();
    store->cutLog();
    EXPECT_LT(std::filesystem::file_size(path), sizeBefore / 5);
    EXPECT_EQ(std::filesystem::file_size(path.string() + "-wal"), 0u) << "it holds what was erased";
    ConnectionQuery everything;
    everything.to = Moment::max();
    EXPECT_EQ(history->connections(everything), std::vector<ConnectionId>{5001});
    EXPECT_EQ(history->totalUpTo(1, {}, at(9)), ByteCount{});
    EXPECT_EQ(history->totalUpTo({}, {}, at(9)).received, 5000);
    reopen();
    const LedgerState state = store->load(at(9)).value();
    EXPECT_EQ(state.totals.start, at(2));
    ASSERT_EQ(state.applications.size(), 1u);
    EXPECT_EQ(state.applications[0].id, 302);
    EXPECT_EQ(state.nextConnectionId, 5002);
}

TEST_F(StoreTest, IsRefusedToASecondDaemonAndForForeignFiles) {
    std::string error;
    EXPECT_FALSE(Store::open(path, error));
    EXPECT_NE(error.find("held by another process"), std::string::npos) << error;
    std::filesystem::create_symlink(path, folder / "link.db");
    EXPECT_FALSE(Store::open(folder / "link.db", error)) << "it is the same file";
    interfere("PRAGMA user_version = 1000");
    store.reset();
    EXPECT_FALSE(Store::open(path, error));
    EXPECT_NE(error.find("later version"), std::string::npos) << error;
    interfere("PRAGMA user_version = 1; PRAGMA application_id = 7");
    EXPECT_FALSE(Store::open(path, error));
    EXPECT_NE(error.find("another program's"), std::string::npos) << error;
    path = folder / "other.db";
    interfere("CREATE TABLE something (x)");
    EXPECT_FALSE(Store::open(path, error));
    EXPECT_NE(error.find("another program's"), std::string::npos) << error;
    EXPECT_FALSE(Store::open(folder / "missing" / "history.db", error));
    EXPECT_NE(error.find("No such file"), std::string::npos) << error;
}

TEST_F(StoreTest, ALinkToAFileThatIsYetToBeMadeIsThatFile) {
    std::filesystem::create_symlink("second", folder / "first");
    std::filesystem::create_symlink(folder / "new.db", folder / "second");
    std::string error;
    const auto linked = Store::open(folder / "first", error);
    ASSERT_TRUE(linked) << error;
    EXPECT_FALSE(Store::open(folder / "new.db", error));
    EXPECT_NE(error.find("held by another process"), std::string::npos) << error;
    std::filesystem::create_symlink("loop", folder / "loop");
    EXPECT_FALSE(Store::open(folder / "loop", error));
}

TEST_F(StoreTest, AnUpgradeThatFailsLeavesTheDatabaseAsItWas) {
    store.reset();
    interfere("ALTER TABLE series DROP COLUMN payload_received; PRAGMA user_version = 2");
    std::string error;
    EXPECT_FALSE(Store::open(path, error));
    EXPECT_NE(error.find("step 3: duplicate column name: payload_sent"), std::string::npos) << error;
    interfere("ALTER TABLE series ADD COLUMN payload_received INTEGER");  // works only if it is not there
}

/** Ways in which a file may be damaged, each of a database of some pages. */
class DamagedStoreTest : public StoreFixture, public testing::WithParamInterface<const char*> {
  protected:
    void damage() {
        const std::string how = GetParam();
        if (how == "Truncated") {
            std::filesystem::resize_file(path, std::filesystem::file_size(path) / 2);
            return;
        }
        std::fstream file(path, std::ios::in | std::ios::out | std::ios::binary);
        file.seekp(how == "InItsHeader" ? 0 : rootOf(how == "InItsSeries" ? "series" : "connections"))
            << std::string(512, '\xff');
    }

    std::streamoff rootOf(const std::string& table) {
        SQLite::Database database;
        EXPECT_TRUE(database.Open(path, SQLite::OpenMode::ReadOnly));
        SQLite::Query root(database,
                           "SELECT (rootpage - 1) * page_size FROM sqlite_schema, pragma_page_size "
                           "WHERE name = '" +
                               table + "'");
        EXPECT_EQ(root.Step(), SQLite::StepResult::Row);
        return root.GetColumnAsInt64(0);
    }

    std::vector<std::string> setAside() {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(folder)) {
            if (entry.path().filename().string().starts_with("history.db.damaged-")) {
                names.push_back(entry.path());
            }
        }
        return names;
    }
};
INSTANTIATE_TEST_SUITE_P(All, DamagedStoreTest,
                         testing::Values("Truncated", "InItsHeader", "InItsSeries", "InItsConnections"),
                         [](const auto& info) { return info.param; });

TEST_P(DamagedStoreTest, IsSetAsideWholeAndCountingBeginsAnew) {
    Ledger ledger(store->load(at(0)).value());
    const auto samples = manySamples(2000, {10, 1});
    write(ledger, samples, 1);
    reopen();  // brings the log into the database
    store.reset();
    damage();
    const auto size = std::filesystem::file_size(path);
    reopen();
    ledger.apply(samples, at(2));
    if (!store->append(ledger.takeChanges(at(2)))) {  // found only now
        EXPECT_NE(store->lastError().find("checked at the next start"), std::string::npos);
        reopen();
    }
    ASSERT_EQ(setAside().size(), 1u);
    EXPECT_EQ(std::filesystem::file_size(setAside()[0]), size);
    Ledger anew(store->load(at(3)).value());
    write(anew, {sampleOf(1, "/a", {10, 0})}, 3);
    EXPECT_EQ(reader()->totalUpTo({}, {}, at(3)), anew.totals().counters.total());
    reopen();
    EXPECT_EQ(setAside().size(), 1u) << "the new one is sound";
}

TEST_F(StoreTest, DamageThatOnlyAReaderMeetsIsLookedForAtTheNextStart) {
    Ledger ledger(store->load(at(0)).value());
    StoreBatch batch(*store);
    for (int second = 1; second < 1000; ++second) {
        ledger.apply({sampleOf(1, "/a", {10, 0})}, at(second));
        ASSERT_TRUE(batch.append(ledger.takeChanges(at(second))));
    }
    ASSERT_TRUE(batch.commit());
    store.reset();
    SQLite::Database database;
    ASSERT_TRUE(database.Open(path, SQLite::OpenMode::ReadOnly));
    SQLite::Query oldest(database, "SELECT pgoffset FROM dbstat WHERE name = 'series' AND pagetype = 'leaf'");
    ASSERT_EQ(oldest.Step(), SQLite::StepResult::Row);
    std::fstream(path).seekp(oldest.GetColumnAsInt64(0)) << std::string(512, '\xff');
    oldest.Reset();
    database.Close();

    reopen();
    EXPECT_EQ(store->load(at(1000))->applications.size(), 1u) << "the writer never comes there";
    EXPECT_EQ(reader()->totalUpTo({}, {}, at(999)).received, 9990);
    EXPECT_EQ(reader()->totalUpTo({}, {}, at(1)), ByteCount{});
    reopen();
    EXPECT_TRUE(store->load(at(1000))->applications.empty()) << "a new history";
}

TEST_F(StoreTest, AFileThatWasNeverADatabaseOfOursIsLeftAlone) {
    path = folder / "letter.txt";
    std::ofstream(path) << std::string(5000, 'x');
    std::string error;
    for (int attempt = 0; attempt < 2; ++attempt) {
        EXPECT_FALSE(Store::open(path, error));
        EXPECT_NE(error.find("not a database"), std::string::npos) << error;
    }
    EXPECT_EQ(std::filesystem::file_size(path), 5000u);
}

}  // namespace service
