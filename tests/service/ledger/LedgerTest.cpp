// SPDX-License-Identifier: GPL-3.0-or-later
#include "service/ledger/Ledger.h"

#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <map>
#include <random>
#include <thread>
#include <utility>

#include "tests/service/ledger/Samples.h"

using namespace service;

namespace {

struct LedgerTest : testing::Test {
    LedgerChanges apply(int second, const std::vector<TrafficSample>& samples) {
        ledger.apply(samples, at(second));
        return ledger.takeChanges(at(second));
    }

    Ledger ledger{{.totals = {.counters = {}, .start = at(0)}, .applications = {}}};
};

RecordingRule allBut(const std::string& path) {
    RecordingRule rule(RecordingRule::Mode::AllButListed);
    rule.list(path, path);
    return rule;
}

}  // namespace

TEST_F(LedgerTest, WhatTheWriterTakesAddsUpWhileOthersCountAndAsk) {
    std::atomic<bool> done = false;
    std::thread counting([&] {
        std::mt19937 random(1);
        for (int i = 0; i < 5000; ++i) {
            const std::uint64_t key = random() % 50;
            const ByteCount moved{static_cast<int>(random() % 1000), static_cast<int>(random() % 10)};
            ledger.apply({sampleOf(key, std::to_string(key % 7), moved, random() % 4 == 0,
                                   std::array{6, 17, 1}[key % 3])},
                         at(i));
        }
        done = true;
    });
    std::map<ApplicationId, Counters> applications;
    std::map<ConnectionId, ByteCount> connections;
    for (bool last = false; !std::exchange(last, done);) {
        const LedgerChanges changes = ledger.takeChanges(at(0));
        for (const auto& application : changes.applications) {
            applications[application.id] = application.counters;
        }
        for (const auto& connection : changes.connections) {
            connections[connection.id] = connection.bytes;
        }
        Counters sum;
        for (const auto& [id, counters] : applications) {
            sum += counters;
        }
        ASSERT_EQ(sum, changes.totals.counters);
        ledger.liveConnection(changes.nextConnectionId - 1, at(0));
        ledger.applications();
    }
    counting.join();
    ByteCount moved;
    for (const auto& [id, bytes] : connections) {
        moved += bytes;
    }
    EXPECT_EQ(moved, ledger.totals().counters.total());
}

TEST_F(LedgerTest, ChangesAreGivenOnce) {
    EXPECT_EQ(apply(1, {sampleOf(1, "/a", {5, 6}), sampleOf(2, "/b", {})}).applications.size(), 2u);
    EXPECT_TRUE(apply(2, {}).empty());
    const LedgerChanges changes = apply(3, {sampleOf(2, "/b", {1, 0})});
    ASSERT_EQ(changes.applications.size(), 1u);
    EXPECT_EQ(changes.applications[0].path, "/b");
    EXPECT_EQ(changes.applications[0].firstSeen, at(1));
    EXPECT_EQ(changes.applications[0].lastSeen, at(3));
    ASSERT_EQ(changes.connections.size(), 1u);
    EXPECT_EQ(changes.connections[0].end, at(3));
}

TEST_F(LedgerTest, AnEndedConnectionIsGivenALastTimeAndItsKeyMayComeAgain) {
    const ConnectionId id = apply(1, {sampleOf(1, "/a", {5, 0})}).connections.at(0).id;
    ASSERT_TRUE(ledger.liveConnection(id, at(7)));
    EXPECT_EQ(ledger.liveConnection(id, at(7))->end, at(7));
    ledger.apply({sampleOf(1, "/a", {2, 0}, true)}, at(9));
    EXPECT_FALSE(ledger.liveConnection(id, at(9)));
    const auto connections = apply(10, {sampleOf(1, "/a", {}, true)}).connections;
    ASSERT_EQ(connections.size(), 2u);
    EXPECT_EQ(connections[0].id, id);
    EXPECT_EQ(connections[0].bytes, (ByteCount{7, 0}));
    EXPECT_EQ(connections[0].end, at(9));
    EXPECT_EQ(connections[1].bytes, ByteCount{}) << "one whose only sample is its end is one still";
    EXPECT_EQ(connections[1].end, at(10));
    EXPECT_TRUE(apply(11, {}).empty());
}

TEST_F(LedgerTest, WhatMovesFromTheBeginningOfAClearingOnIsWhatIsLeftOfIt) {
    const LedgerChanges before = apply(1, {sampleOf(1, "/a", {100, 100}), sampleOf(2, "/b", {100, 100})});
    ledger.beginClearing(at(5));
    const LedgerChanges meanwhile = apply(6, {sampleOf(1, "/a", {3, 4})});
    EXPECT_EQ(meanwhile.totals.counters.total(), (ByteCount{203, 204}));
    EXPECT_FALSE(meanwhile.wiped);
    EXPECT_EQ(ledger.applications().size(), 2u);

    const LedgerChanges after = ledger.takeFresh(at(6));
    ledger.endClearing(true);
    EXPECT_EQ(ledger.applications().size(), 1u);
    EXPECT_EQ(ledger.takeNewApplications(), std::vector{after.applications.at(0).id})
        << "nobody has been told";
    EXPECT_TRUE(after.wiped);
    EXPECT_EQ(after.totals.start, at(5));
    EXPECT_EQ(after.totals.counters.total(), (ByteCount{3, 4}));
    ASSERT_EQ(after.applications.size(), 1u);
    EXPECT_GT(after.applications[0].id, before.applications[0].id);
    ASSERT_EQ(after.connections.size(), 1u);
    EXPECT_GT(after.connections[0].id, before.connections[0].id);
    EXPECT_EQ(after.connections[0].bytes, (ByteCount{3, 4}));
    EXPECT_EQ(after.connections[0].start, at(5));
    EXPECT_TRUE(apply(7, {}).empty());
    EXPECT_EQ(apply(8, {sampleOf(1, "/a", {1, 1})}).connections.at(0).bytes, (ByteCount{4, 5}));

    ledger.beginClearing(at(9));
    ledger.endClearing(true);
    const LedgerChanges again = apply(10, {sampleOf(1, "/a", {1, 1}), sampleOf(2, "/c", {1, 1})});
    EXPECT_EQ(ledger.takeNewApplications(), std::vector{again.applications.at(1).id})
        << "one was known before";
}

TEST_F(LedgerTest, AClearingThatIsGivenUpLeavesNoTrace) {
    const ConnectionId id = apply(1, {sampleOf(1, "/a", {100, 0})}).connections.at(0).id;
    ledger.beginClearing(at(2));
    ledger.apply({sampleOf(1, "/a", {3, 0}), sampleOf(2, "/b", {5, 0})}, at(3));
    ledger.takeFresh(at(3));
    ledger.endClearing(false);
    const LedgerChanges after = apply(4, {sampleOf(1, "/a", {}, true)});
    EXPECT_EQ(after.totals.start, at(0));
    EXPECT_EQ(after.totals.counters.total().received, 108);
    EXPECT_EQ(after.applications.size(), 2u);
    ASSERT_EQ(after.connections.size(), 2u);
    EXPECT_EQ(after.connections[0].id, id);
    EXPECT_EQ(after.connections[0].bytes.received, 103);
}

TEST_F(LedgerTest, NothingIsLeftOfAnApplicationThatIsNotRecorded) {
    Ledger strict({}, allBut("/a"));
    strict.apply({sampleOf(1, "/a", {5, 5}), sampleOf(2, "/a", {5, 5}, true)}, at(1));
    EXPECT_TRUE(strict.takeChanges(at(1)).empty());
    EXPECT_TRUE(strict.takeNewApplications().empty());
    EXPECT_EQ(strict.totals().counters, Counters{});
}

TEST_F(LedgerTest, AChangedRuleCutsConnectionsWhereAPollEnds) {
    ledger.setRule(allBut("/a"));
    const LedgerChanges cut = apply(2, {sampleOf(1, "/a", {5, 0}), sampleOf(2, "/b", {7, 0})});
    ASSERT_EQ(cut.connections.size(), 2u);
    EXPECT_FALSE(cut.connections[0].isOpen);
    EXPECT_EQ(cut.connections[0].bytes.received, 5) << "moved while the old rule held";
    EXPECT_TRUE(cut.connections[1].isOpen);
    EXPECT_TRUE(apply(3, {sampleOf(1, "/a", {100, 0})}).empty());

    ledger.setRule(RecordingRule());
    EXPECT_TRUE(apply(4, {sampleOf(1, "/a", {1000, 0})}).empty());
    const LedgerChanges resumed = apply(6, {sampleOf(1, "/a", {20, 0}), sampleOf(2, "/b", {1, 0})});
    ASSERT_EQ(resumed.connections.size(), 2u);
    EXPECT_EQ(resumed.connections[0].id, cut.connections[1].id) << "always recorded, so never cut";
    EXPECT_GT(resumed.connections[1].id, cut.connections[1].id);
    EXPECT_EQ(resumed.connections[1].bytes.received, 20);
    EXPECT_EQ(resumed.connections[1].start, at(4));
    EXPECT_EQ(resumed.applications[0].counters.total().received, 25);
    EXPECT_EQ(resumed.totals.counters.total().received, 33);

    const LedgerChanges later = apply(7, {sampleOf(3, "/b", {1, 0}), sampleOf(4, "/c", {1, 0})});
    EXPECT_EQ(later.connections[0].start, at(0)) << "it was open all the time, and /b recorded";
    EXPECT_EQ(later.connections[1].start, at(4)) << "whether the old rule admitted /c was never asked";
}

TEST_F(LedgerTest, ASharedConnectionHoldsTheBytesOfWhoIsRecorded) {
    ledger.setRule(allBut("/worker"));
    apply(1, {});
    const LedgerChanges changes = apply(2, {sampleOf(1, "/listener", {1, 0}), sampleOf(1, "/worker", {10, 0}),
                                            sampleOf(1, "/worker", {}, true)});
    ASSERT_EQ(changes.connections.size(), 1u);
    EXPECT_EQ(changes.connections[0].bytes.received, 1);
    EXPECT_FALSE(changes.connections[0].isOpen);
    EXPECT_EQ(changes.totals.counters.total().received, 1);
}

TEST_F(LedgerTest, AbsorbedChangesAreAsIfTakenAtOnce) {
    LedgerChanges changes = apply(1, {sampleOf(1, "/a", {1, 0}), sampleOf(2, "/b", {2, 0})});
    changes.absorb(apply(2, {sampleOf(3, "/c", {3, 0}), sampleOf(1, "/a", {10, 0})}));
    EXPECT_EQ(changes.moment, at(2));
    ASSERT_EQ(changes.connections.size(), 3u);
    for (std::size_t i = 0; i < 3; ++i) {
        EXPECT_EQ(changes.connections[i].id, static_cast<ConnectionId>(i + 1));
        EXPECT_EQ(changes.connections[i].bytes.received, (std::array{11, 2, 3}[i]));
        EXPECT_EQ(changes.applications[i].counters.total().received, (std::array{11, 2, 3}[i]));
    }
}
