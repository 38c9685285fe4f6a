// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <limits>

#include "libs/sqlite/Database.h"
#include "libs/sqlite/Query.h"
#include "libs/sqlite/Transaction.h"

namespace SQLite {

namespace {

/** A private database with one empty table. */
struct SQLiteTest : testing::Test {
    SQLiteTest() {
        EXPECT_TRUE(database.Open(":memory:", OpenMode::ReadWriteCreate));
        EXPECT_TRUE(database.Execute("CREATE TABLE thing (number INTEGER UNIQUE, text TEXT, blob BLOB)"));
    }

    Database database;
};

bool contains(const std::string& text, const char* part) {
    return text.find(part) != std::string::npos;
}

}  // namespace

TEST_F(SQLiteTest, ValuesOfEveryKindComeBackAsTheyWere) {
    const std::string textWithZero("a\0b", 3);
    const std::vector<std::uint8_t> blob{0, 255, 0, 7};
    Query insert(database, "INSERT INTO thing VALUES (?1, ?2, ?3)");
    ASSERT_TRUE(insert.Execute(std::numeric_limits<std::int64_t>::min(), textWithZero, blob));
    ASSERT_TRUE(insert.Execute(7, "", std::vector<std::uint8_t>{}));
    ASSERT_TRUE(database.Execute("INSERT INTO thing VALUES (8, NULL, NULL)"));

    Query select(database, "SELECT number, text, blob, text IS NULL FROM thing ORDER BY number");
    ASSERT_EQ(select.Step(), StepResult::Row);
    EXPECT_EQ(select.GetColumnAsInt64(0), std::numeric_limits<std::int64_t>::min());
    EXPECT_EQ(select.GetColumnAsString(1), textWithZero);
    EXPECT_EQ(select.GetColumnAsBlob(2), blob);
    ASSERT_EQ(select.Step(), StepResult::Row);
    EXPECT_EQ(select.GetColumnAsInt(3), 0) << "an empty text is not NULL";
    ASSERT_EQ(select.Step(), StepResult::Row);
    EXPECT_EQ(select.GetColumnAsString(1), "");
    EXPECT_TRUE(select.GetColumnAsBlob(2).empty());
    EXPECT_EQ(select.Step(), StepResult::Done);
}

TEST_F(SQLiteTest, WhatCannotBeOpenedPreparedOrStoredSaysWhyAndWorksOn) {
    Query insert(database, "INSERT INTO thing (number) VALUES (?1)");
    ASSERT_TRUE(insert.Execute(1));
    EXPECT_FALSE(insert.Execute(1));
    EXPECT_TRUE(contains(insert.GetLastError(), "UNIQUE")) << insert.GetLastError();
    EXPECT_TRUE(insert.Execute(2));

    Query unprepared(database, "SELECT number FROM nowhere");
    EXPECT_FALSE(unprepared.Execute(1));
    EXPECT_EQ(unprepared.GetColumnAsString(0), "");
    ASSERT_TRUE(database.Execute("SELECT 1"));
    EXPECT_TRUE(contains(unprepared.GetLastError(), "nowhere")) << unprepared.GetLastError();

    EXPECT_FALSE(database.Open("/nonexistent/folder/file", OpenMode::ReadWriteCreate));
    EXPECT_TRUE(contains(database.GetLastError(), "unable to open")) << database.GetLastError();
    EXPECT_FALSE(database.Execute("SELECT 1"));
    EXPECT_FALSE(Query(database, "SELECT 1").IsValid());
    EXPECT_FALSE(Transaction(database).IsActive());
}

}  // namespace SQLite
