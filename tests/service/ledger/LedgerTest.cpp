// SPDX-License-Identifier: GPL-3.0-or-later
#include "service/ledger/Ledger.h"

#include <gtest/gtest.h>

#include <atomic>
#include <map>
#include <random>
#include <thread>

using namespace service;

namespace {

constexpr Moment at(int seconds) {
    return Moment(std::chrono::seconds(1'700'000'000 + seconds));
}

TrafficSample sampleOf(std::uint64_t key, const std::string& path, ByteCount moved, bool closed = false) {
    TrafficSample sample;
    sample.connectionKey = key;
    sample.application = std::make_shared<ApplicationIdentity>(ApplicationIdentity{path, "name of " + path});
    sample.socketProtocol = 6;
    sample.opened = at(0);
    sample.moved = moved;
    sample.closed = closed;
    return sample;
}

LedgerState emptyState() {
    return {.totals = {.counters = {}, .start = at(0)}, .applications = {}};
}

std::int64_t below(std::mt19937& random, unsigned limit) {
    return static_cast<std::int64_t>(random() % limit);
}

/** A second in which a few of many connections of a few applications move bytes, and some end. */
std::vector<TrafficSample> randomSecond(std::mt19937& random) {
    std::vector<TrafficSample> samples;
    for (int i = 0; i < 20; ++i) {
        const std::uint64_t key = random() % 50;
        const ByteCount moved{below(random, 1000), below(random, 10)};
        TrafficSample sample = sampleOf(key, "/bin/" + std::to_string(key % 7), moved);
        sample.socketProtocol = std::array{6, 17, 1}[key % 3];
        sample.closed = random() % 4 == 0;
        samples.push_back(sample);
    }
    return samples;
}

}  // namespace

TEST(LedgerTest, WhatIsTakenAddsUpToTheTotalsAndToTheConnections) {
    std::mt19937 random(1);
    Ledger ledger(emptyState());
    std::map<ApplicationId, Counters> applications;
    std::map<ConnectionId, ByteCount> connections;
    for (int second = 1; second <= 200; ++second) {
        ledger.apply(randomSecond(random), at(second));
        const LedgerChanges changes = ledger.takeChanges(at(second));
        for (const auto& application : changes.applications) {
            applications[application.id] = application.counters;
        }
        for (const auto& connection : changes.connections) {
            connections[connection.id] = connection.bytes;
        }
        Counters sum;
        for (const auto& [id, counters] : applications) {
            for (std::size_t i = 0; i < protocolClassCount; ++i) {
                sum.byClass[i] += counters.byClass[i];
            }
        }
        ASSERT_EQ(sum, changes.totals.counters) << "after second " << second;
    }
    ByteCount moved;
    for (const auto& [id, bytes] : connections) {
        moved += bytes;
    }
    EXPECT_EQ(moved, ledger.totals().counters.total());
}

TEST(LedgerTest, ChangesAreGivenOnce) {
    Ledger ledger(emptyState());
    ledger.apply({sampleOf(1, "/a", {5, 6}), sampleOf(2, "/b", {})}, at(1));
    EXPECT_EQ(ledger.takeChanges(at(1)).applications.size(), 2u);
    EXPECT_TRUE(ledger.takeChanges(at(2)).empty());

    ledger.apply({sampleOf(2, "/b", {1, 0})}, at(3));
    const LedgerChanges changes = ledger.takeChanges(at(3));
    ASSERT_EQ(changes.applications.size(), 1u);
    EXPECT_EQ(changes.applications[0].path, "/b");
    EXPECT_EQ(changes.applications[0].firstSeen, at(1));
    EXPECT_EQ(changes.applications[0].lastSeen, at(3));
    ASSERT_EQ(changes.connections.size(), 1u);
    EXPECT_EQ(changes.connections[0].end, at(3));
}

TEST(LedgerTest, AnEndedConnectionIsGivenALastTimeAndItsKeyMayComeAgain) {
    Ledger ledger(emptyState());
    ledger.apply({sampleOf(1, "/a", {5, 0})}, at(1));
    const ConnectionId id = ledger.takeChanges(at(1)).connections.at(0).id;
    ASSERT_TRUE(ledger.liveConnection(id));

    ledger.apply({sampleOf(1, "/a", {2, 0}, true)}, at(9));
    EXPECT_FALSE(ledger.liveConnection(id));
    ledger.apply({sampleOf(1, "/a", {1, 0})}, at(10));
    const LedgerChanges changes = ledger.takeChanges(at(10));
    ASSERT_EQ(changes.connections.size(), 2u);
    EXPECT_EQ(changes.connections[0].id, id);
    EXPECT_EQ(changes.connections[0].bytes, (ByteCount{7, 0}));
    EXPECT_EQ(changes.connections[0].end, at(9));
    EXPECT_GT(changes.connections[1].id, id);
    EXPECT_TRUE(ledger.takeChanges(at(11)).empty());
}

TEST(LedgerTest, AConnectionWhoseOnlySampleIsItsEndIsStillAConnection) {
    Ledger ledger(emptyState());
    ledger.apply({sampleOf(1, "/a", {}, true)}, at(4));
    const LedgerChanges changes = ledger.takeChanges(at(4));
    ASSERT_EQ(changes.connections.size(), 1u);
    EXPECT_EQ(changes.connections[0].start, at(0));
    EXPECT_EQ(changes.connections[0].end, at(4));
    EXPECT_EQ(changes.connections[0].bytes, ByteCount{});
    EXPECT_FALSE(ledger.liveConnection(changes.connections[0].id));
}

TEST(LedgerTest, AConnectionThatOutlivesAClearIsNewAndItsBytesStartThere) {
    Ledger ledger(emptyState());
    ledger.apply({sampleOf(1, "/a", {100, 100})}, at(1));
    const LedgerChanges before = ledger.takeChanges(at(1));
    ledger.clear(at(5));
    EXPECT_EQ(ledger.applicationCount(), 0u);
    EXPECT_TRUE(ledger.takeNewApplications().empty());

    ledger.apply({sampleOf(1, "/a", {3, 4})}, at(6));
    const LedgerChanges after = ledger.takeChanges(at(6));
    EXPECT_TRUE(after.wiped);
    EXPECT_EQ(after.totals.start, at(5));
    EXPECT_EQ(after.totals.counters.total(), (ByteCount{3, 4}));
    ASSERT_EQ(after.applications.size(), 1u);
    EXPECT_GT(after.applications[0].id, before.applications[0].id);
    ASSERT_EQ(after.connections.size(), 1u);
    EXPECT_GT(after.connections[0].id, before.connections[0].id);
    EXPECT_EQ(after.connections[0].bytes, (ByteCount{3, 4}));
    EXPECT_EQ(after.connections[0].start, at(5));
    EXPECT_FALSE(ledger.takeChanges(at(7)).wiped);
}

TEST(LedgerTest, AConnectionThatWasHandedOnBelongsToWhoMovedBytesLast) {
    Ledger ledger(emptyState());
    ledger.apply({sampleOf(1, "/listener", {1, 0})}, at(1));
    ledger.apply({sampleOf(1, "/worker", {10, 0})}, at(2));
    ledger.apply({sampleOf(1, "/listener", {}, true)}, at(3));
    const LedgerChanges changes = ledger.takeChanges(at(3));
    ASSERT_EQ(changes.applications.size(), 2u);
    EXPECT_EQ(changes.applications[0].counters.total().received, 1);
    EXPECT_EQ(changes.applications[1].counters.total().received, 10);
    ASSERT_EQ(changes.connections.size(), 1u);
    EXPECT_EQ(changes.connections[0].applicationId, changes.applications[1].id);
    EXPECT_EQ(changes.connections[0].bytes.received, 11);
}

TEST(LedgerTest, GoesOnFromARestoredStateWithoutAnnouncingWhatItKnew) {
    ApplicationRecord known;
    known.id = 4;
    known.path = "/a";
    known.counters[ProtocolClass::Tcp] = {100, 10};
    LedgerState state = {.totals = {.counters = known.counters, .start = at(-1000)},
                         .applications = {known},
                         .nextApplicationId = 9,
                         .nextConnectionId = 70};
    Ledger ledger(state);
    ledger.apply({sampleOf(1, "/a", {1, 1}), sampleOf(2, "/new", {2, 2})}, at(1));
    EXPECT_EQ(ledger.takeNewApplications(), std::vector<ApplicationId>{9});
    EXPECT_EQ(ledger.application(4)->counters.total(), (ByteCount{101, 11}));
    EXPECT_EQ(ledger.totals().counters.total(), (ByteCount{103, 13}));
    EXPECT_EQ(ledger.takeChanges(at(1)).connections.at(0).id, 70);
}

TEST(LedgerTest, IsConsistentForTheWriterWhileOthersCountAndAsk) {
    Ledger ledger(emptyState());
    std::atomic<bool> done = false;
    std::thread counting([&] {
        std::mt19937 random(2);
        for (int second = 1; second <= 300; ++second) {
            ledger.apply(randomSecond(random), at(second));
        }
        done = true;
    });
    std::thread asking([&] {
        while (!done) {
            ledger.liveConnection(1);
            ledger.applications();
        }
    });
    std::map<ApplicationId, ByteCount> taken;
    bool last = false;
    do {
        last = done;
        const LedgerChanges changes = ledger.takeChanges(at(0));
        for (const auto& application : changes.applications) {
            taken[application.id] = application.counters.total();
        }
        ByteCount sum;
        for (const auto& [id, bytes] : taken) {
            sum += bytes;
        }
        EXPECT_EQ(sum, changes.totals.counters.total());
    } while (!last);
    counting.join();
    asking.join();
}
