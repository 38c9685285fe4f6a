// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include "service/ledger/Records.h"

using namespace service;

namespace {

ConnectionRecord connectionWith(ConnectionId id, std::int64_t received) {
    ConnectionRecord connection;
    connection.id = id;
    connection.bytes.received = received;
    return connection;
}

LedgerChanges changesWith(std::vector<ConnectionRecord> connections, int moment) {
    LedgerChanges changes;
    changes.moment = Moment(std::chrono::seconds(moment));
    changes.connections = std::move(connections);
    return changes;
}

std::vector<std::pair<ConnectionId, std::int64_t>> idsAndBytes(const LedgerChanges& changes) {
    std::vector<std::pair<ConnectionId, std::int64_t>> result;
    for (const auto& connection : changes.connections) {
        result.emplace_back(connection.id, connection.bytes.received);
    }
    return result;
}

}  // namespace

TEST(LedgerChangesTest, AbsorbingKeepsTheLatestStateOfEachInTheOrderOfIds) {
    LedgerChanges changes = changesWith({connectionWith(2, 20), connectionWith(5, 50)}, 1);
    changes.wiped = true;
    changes.absorb(changesWith({connectionWith(1, 10), connectionWith(5, 55), connectionWith(7, 70)}, 2));
    EXPECT_EQ(idsAndBytes(changes),
              (std::vector<std::pair<ConnectionId, std::int64_t>>{{1, 10}, {2, 20}, {5, 55}, {7, 70}}));
    EXPECT_EQ(changes.moment, Moment(std::chrono::seconds(2)));
    EXPECT_TRUE(changes.wiped) << "a wipe that is not on disk yet is still to be done";
}

TEST(LedgerChangesTest, AbsorbingAWipeVoidsWhatWasBefore) {
    LedgerChanges changes = changesWith({connectionWith(2, 20)}, 1);
    LedgerChanges later = changesWith({connectionWith(3, 30)}, 2);
    later.wiped = true;
    changes.absorb(later);
    EXPECT_EQ(idsAndBytes(changes), (std::vector<std::pair<ConnectionId, std::int64_t>>{{3, 30}}));
    EXPECT_TRUE(changes.wiped);
}
