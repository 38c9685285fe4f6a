// SPDX-License-Identifier: GPL-3.0-or-later
#include <map>
#include <random>

#include "service/ledger/Ledger.h"
#include "service/store/Housekeeper.h"
#include "service/store/columns/Columns.h"
#include "tests/service/store/HistoryAudit.h"
#include "tests/service/store/StoreFixture.h"

namespace service {

using namespace std::chrono;

/** A history that is written at a clock of its own and kept tidy all the while. */
class ThinningTest : public StoreFixture {
  protected:
    void SetUp() override { m_Ledger.emplace(store->load(at(0)).value()); }

    /** Some of six applications move something. */
    void move(Moment now) {
        std::vector<TrafficSample> samples;
        for (std::uint64_t key = 0; key < 6; ++key) {
            if (m_Random() % 3 == 0) {
                const ByteCount moved{static_cast<int>(m_Random() % 100), static_cast<int>(m_Random() % 9)};
                samples.push_back(sampleOf(key, std::to_string(key), moved, false, key % 2 == 0 ? 6 : 17));
            }
        }
        m_Ledger->apply(samples, now);
        ASSERT_TRUE(store->append(m_Ledger->takeChanges(now))) << store->lastError();
    }

    void tidy(Moment now) {
        while (!store->isThinned(now)) {
            ASSERT_TRUE(store->thin(now)) << store->lastError();
        }
    }

    /** As if the history had got to `present` second by second. */
    void ageTo(Moment present) {
        LedgerChanges changes;
        changes.moment = present;
        changes.totals = m_Ledger->totals();
        ASSERT_TRUE(store->append(changes));
        interfere("UPDATE counting SET trusted = latest");
        reopen();
        tidy(present);
    }

    void audit() {
        std::string error;
        const auto audit = HistoryAudit::open(path, error);
        ASSERT_TRUE(audit) << error;
        EXPECT_TRUE(audit->checkPages() && audit->checkSums()) << audit->finding();
    }

    std::int64_t rowCount(const std::string& condition) {
        SQLite::Database database;
        EXPECT_TRUE(database.Open(path, SQLite::OpenMode::ReadOnly));
        SQLite::Query count(database, "SELECT count(*) FROM series WHERE " + condition);
        EXPECT_EQ(count.Step(), SQLite::StepResult::Row) << count.GetLastError();
        return count.GetColumnAsInt64(0);
    }

    std::optional<Ledger> m_Ledger;
    std::mt19937 m_Random{7};
};

TEST_F(ThinningTest, OldRowsGoAndNoTotalAtAKeptMomentChanges) {
    // Bursts of every second, in the midst of which the grains change, on three ages of one history.
    const Moment present = at(0) + days(40);
    const std::vector<Moment> bursts{at(2'400), present - days(30) - minutes(10),
                                     present - days(2) - minutes(10), present - hours(2) - minutes(10),
                                     present - minutes(3)};
    std::map<Moment, ByteCount> all;
    std::map<Moment, ByteCount> one;
    for (const Moment burst : bursts) {
        for (Moment now = burst; now < burst + minutes(20) && now <= present; now += seconds(1)) {
            move(now);
            all[now] = m_Ledger->totals().counters.total();
            one[now] = m_Ledger->application(1)->counters[ProtocolClass::Tcp];
        }
    }
    const auto rowsBefore = rowCount("TRUE");
    ageTo(present);
    audit();
    EXPECT_LT(rowCount("TRUE"), rowsBefore / 2);
    EXPECT_EQ(rowCount("application = 0 AND class = 0 AND moment <= " +
                       std::to_string(toColumn(bursts[0] + minutes(20)))),
              2)
        << "1,200 seconds that reach across the hour";

    const auto history = reader();
    std::int64_t previous = 0;
    for (const auto& [moment, total] : all) {
        const auto age = present - moment;
        const auto grain = age > days(30)   ? seconds(hours(1))
                           : age > days(2)  ? seconds(minutes(1))
                           : age > hours(2) ? seconds(10)
                                            : seconds(1);
        const ByteCount found = history->totalUpTo({}, {}, moment);
        ASSERT_GE(found.received, previous) << "a total sinks";
        previous = found.received;
        if (moment.time_since_epoch() % grain == seconds(0)) {
            ASSERT_EQ(found, total) << "at the age of " << age.count() << " s";
            ASSERT_EQ(history->totalUpTo(1, ProtocolClass::Tcp, moment), one[moment]);
        }
    }
    EXPECT_EQ(history->totalUpTo({}, {}, present), m_Ledger->totals().counters.total());
}

TEST_F(ThinningTest, TotalsBetweenKeptMomentsGrowEvenly) {
    move(at(0));
    const Moment hour = ceil<hours>(at(0));
    m_Ledger->apply({sampleOf(1, "/even", {3'600'000, 7})}, hour - seconds(1'000));
    ASSERT_TRUE(store->append(m_Ledger->takeChanges(hour - seconds(1'000))));
    ageTo(hour + days(40));
    const auto history = reader();
    const ApplicationId id = m_Ledger->applications().back().id;
    for (int second = 0; second <= 3'600; second += 100) {
        EXPECT_EQ(history->totalUpTo(id, {}, hour - hours(1) + seconds(second)),
                  (ByteCount{second * 1'000, second * 7 / 3'600}));
    }
    EXPECT_EQ(history->totalUpTo(id, {}, hour + days(9)).received, 3'600'000);
}

TEST_F(ThinningTest, WhateverTheClockDoesTheSumsAgreeAndNothingIsLost) {
    Moment now = at(0) + days(200);
    for (int leap = 0; leap < 60; ++leap) {
        const int step = 1 << (m_Random() % 12);
        for (int i = 0; i < 200; ++i) {
            now += seconds(step);
            move(now);
        }
        const ByteCount all = m_Ledger->totals().counters.total();
        ASSERT_EQ(reader()->totalUpTo({}, {}, now), all);
        ageTo(now);
        if (leap % 5 == 4) {
            ASSERT_TRUE(store->beginPruning(now, days(60)));
            while (!store->isPruned()) {
                ASSERT_TRUE(store->prune());
            }
        }
        audit();
        ASSERT_EQ(reader()->totalUpTo({}, {}, Moment::max()), all);
        const seconds distance(m_Random() % (1U << (m_Random() % 24)));  // half a year at most
        now = std::max(at(0), m_Random() % 2 == 0 ? now + distance : now - distance);
    }
}

}  // namespace service
