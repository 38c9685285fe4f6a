// SPDX-License-Identifier: GPL-3.0-or-later
#include "service/server/ApplicationsCursor.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace service {

namespace {

using Ids = std::vector<ApplicationId>;

ApplicationRecord application(ApplicationId id, const std::string& name, ByteCount bytes) {
    ApplicationRecord record;
    record.id = id;
    record.name = name;
    record.counters[ProtocolClass::Tcp] = bytes;
    return record;
}

Ids rowsOf(ApplicationsCursor& cursor) {
    Ids ids;
    for (std::int32_t row = 0; row < static_cast<std::int32_t>(cursor.count()); ++row) {
        ids.push_back(cursor.idAt(row).value());
    }
    return ids;
}

LedgerState stateWith(std::vector<ApplicationRecord> applications) {
    LedgerState state;
    state.nextApplicationId = static_cast<ApplicationId>(applications.size()) + 1;
    state.applications = std::move(applications);
    return state;
}

}  // namespace

TEST(ApplicationsCursor, NamesStandAsAPersonExpects) {
    const Ledger ledger(
        stateWith({application(1, "zebra", {}), application(2, "app 10", {}), application(3, "Banana", {}),
                   application(4, "éclair", {}), application(5, "app 9", {}), application(6, "Äpfel", {}),
                   application(7, "banana", {}), application(8, "apple", {})}));
    const TextOrder order;
    ApplicationsCursor cursor(ledger, order);
    cursor.sortBy(ApplicationSortField::Name, SortDirection::Ascending);
    EXPECT_EQ(rowsOf(cursor), (Ids{6, 5, 2, 8, 3, 7, 4, 1}));
    cursor.sortBy(ApplicationSortField::Name, SortDirection::Descending);
    EXPECT_EQ(rowsOf(cursor), (Ids{1, 4, 3, 7, 8, 2, 5, 6}));
}

TEST(ApplicationsCursor, EqualRowsStandByTheirIdsInEveryDirection) {
    const Ledger ledger(stateWith({application(1, "b", {.received = 5, .sent = 0}),
                                   application(2, "a", {.received = 10, .sent = 0}),
                                   application(3, "c", {.received = 5, .sent = 0})}));
    const TextOrder order;
    ApplicationsCursor cursor(ledger, order);
    for (const auto& [direction, expected] : {std::pair(SortDirection::Ascending, Ids{1, 3, 2}),
                                              {SortDirection::Descending, Ids{2, 1, 3}},
                                              {SortDirection::None, Ids{1, 2, 3}}}) {
        cursor.sortBy(ApplicationSortField::ReceivedBytes, direction);
        EXPECT_EQ(rowsOf(cursor), expected);
    }
}

}  // namespace service
