// SPDX-License-Identifier: GPL-3.0-or-later
#include "service/server/ApplicationsCursor.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace service {

namespace {

using Ids = std::vector<ApplicationId>;

ApplicationRecord application(ApplicationId id, const std::string& name, const std::string& path,
                              ByteCount bytes) {
    ApplicationRecord record;
    record.id = id;
    record.name = name;
    record.path = path;
    record.counters[ProtocolClass::Tcp] = bytes;
    record.lastSeen = Moment(std::chrono::seconds(1000 - id % 2));
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
    const Ledger ledger(stateWith({application(1, "zebra", "", {}), application(2, "app 10", "", {}),
                                   application(3, "Banana", "", {}), application(4, "éclair", "", {}),
                                   application(5, "app 9", "", {}), application(6, "Äpfel", "", {}),
                                   application(7, "banana", "", {}), application(8, "apple", "", {})}));
    const TextOrder order;
    ApplicationsCursor cursor(ledger, order);
    cursor.sortBy(ApplicationSortField::Name, SortDirection::Ascending);
    EXPECT_EQ(rowsOf(cursor), (Ids{6, 5, 2, 8, 3, 7, 4, 1}));
    cursor.sortBy(ApplicationSortField::Name, SortDirection::Descending);
    EXPECT_EQ(rowsOf(cursor), (Ids{1, 4, 3, 7, 8, 2, 5, 6}));
}

TEST(ApplicationsCursor, EveryFieldSortsAndEqualRowsStandByTheirIds) {
    const Ledger ledger(stateWith({application(1, "b", "/opt/x", {.received = 5, .sent = 900}),
                                   application(2, "a", "/usr/bin/y", {.received = 10, .sent = 80}),
                                   application(3, "c", "", {.received = 5, .sent = 80})}));
    const TextOrder order;
    ApplicationsCursor cursor(ledger, order);
    EXPECT_EQ(rowsOf(cursor), (Ids{1, 2, 3}));
    struct Case {
        ApplicationSortField field;
        Ids ascending;
        Ids descending;
    };
    for (const Case& expected : {Case{ApplicationSortField::Path, {3, 1, 2}, {2, 1, 3}},
                                 Case{ApplicationSortField::LastActivity, {1, 3, 2}, {2, 1, 3}},
                                 Case{ApplicationSortField::ReceivedBytes, {1, 3, 2}, {2, 1, 3}},
                                 Case{ApplicationSortField::SentBytes, {2, 3, 1}, {1, 2, 3}},
                                 Case{ApplicationSortField::None, {1, 2, 3}, {1, 2, 3}}}) {
        cursor.sortBy(expected.field, SortDirection::Ascending);
        EXPECT_EQ(rowsOf(cursor), expected.ascending) << static_cast<int>(expected.field);
        cursor.sortBy(expected.field, SortDirection::Descending);
        EXPECT_EQ(rowsOf(cursor), expected.descending) << static_cast<int>(expected.field);
        cursor.sortBy(expected.field, SortDirection::None);
        EXPECT_EQ(rowsOf(cursor), (Ids{1, 2, 3})) << static_cast<int>(expected.field);
    }
}

}  // namespace service
