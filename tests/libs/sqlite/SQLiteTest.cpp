// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <string>
#include <vector>

#include "libs/sqlite/Database.h"
#include "libs/sqlite/Query.h"
#include "libs/sqlite/Transaction.h"

using SQLite::Database;
using SQLite::Query;
using SQLite::StepResult;
using SQLite::Transaction;

namespace {

/** A private database with one empty table. */
struct Thing : testing::Test {
    Thing() {
        EXPECT_TRUE(database.Open(":memory:", SQLite::OpenMode::ReadWriteCreate));
        EXPECT_TRUE(database.Execute("CREATE TABLE thing (number INTEGER UNIQUE, text TEXT, blob BLOB)"));
    }

    int count() {
        Query query(database, "SELECT count(*) FROM thing");
        return query.Step() == StepResult::Row ? query.GetColumnAsInt(0) : -1;
    }

    Database database;
};

using QueryTest = Thing;
using TransactionTest = Thing;

}  // namespace

TEST_F(QueryTest, ValuesOfEveryKindComeBackAsTheyWere) {
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
    EXPECT_EQ(select.GetColumnAsInt(0), 7);
    EXPECT_EQ(select.GetColumnAsInt(3), 0) << "an empty text is not NULL";
    ASSERT_EQ(select.Step(), StepResult::Row);
    EXPECT_EQ(select.GetColumnAsString(1), "");
    EXPECT_TRUE(select.GetColumnAsBlob(2).empty());
    EXPECT_EQ(select.Step(), StepResult::Done);
}

TEST_F(QueryTest, AfterAViolatedConstraintTheStatementSaysSoAndWorksOn) {
    Query insert(database, "INSERT INTO thing (number) VALUES (?1)");
    ASSERT_TRUE(insert.Execute(1));
    EXPECT_FALSE(insert.Execute(1));
    EXPECT_NE(insert.GetLastError().find("UNIQUE"), std::string::npos) << insert.GetLastError();
    EXPECT_TRUE(insert.Execute(2));
    EXPECT_EQ(count(), 2);
}

TEST_F(QueryTest, OneThatCannotBePreparedFailsAtEveryUseAndSaysWhy) {
    Query query(database, "SELECT number FROM nowhere");
    EXPECT_FALSE(query.IsValid());
    EXPECT_FALSE(query.Execute(1));
    EXPECT_EQ(query.Step(), StepResult::Failed);
    EXPECT_EQ(query.GetColumnAsString(0), "");
    ASSERT_TRUE(database.Execute("SELECT 1"));
    EXPECT_NE(query.GetLastError().find("nowhere"), std::string::npos) << query.GetLastError();
}

TEST_F(TransactionTest, IsUndoneUnlessItWasCommitted) {
    {
        Transaction transaction(database);
        ASSERT_TRUE(database.Execute("INSERT INTO thing (number) VALUES (1)"));
    }
    EXPECT_EQ(count(), 0);
    {
        Transaction transaction(database);
        ASSERT_TRUE(database.Execute("INSERT INTO thing (number) VALUES (1)"));
        ASSERT_TRUE(transaction.Commit());
        EXPECT_FALSE(transaction.Commit());
    }
    EXPECT_EQ(count(), 1);
}

TEST_F(TransactionTest, ARefusedCommitLeavesNothingAndTheNextTransactionCanBegin) {
    ASSERT_TRUE(
        database.Execute("PRAGMA foreign_keys = ON;"
                         "CREATE TABLE child (parent INTEGER REFERENCES thing (number) "
                         "DEFERRABLE INITIALLY DEFERRED)"));
    {
        Transaction transaction(database);
        ASSERT_TRUE(database.Execute("INSERT INTO thing (number) VALUES (1); INSERT INTO child VALUES (99)"));
        EXPECT_FALSE(transaction.Commit());
        EXPECT_NE(database.GetLastError().find("FOREIGN KEY"), std::string::npos) << database.GetLastError();
    }
    EXPECT_EQ(count(), 0);
    EXPECT_TRUE(Transaction(database).IsActive());
}

TEST(DatabaseTest, OneThatCannotBeOpenedSaysWhyAndRefusesWork) {
    Database database;
    EXPECT_FALSE(database.Open("/nonexistent/folder/file", SQLite::OpenMode::ReadWriteCreate));
    EXPECT_NE(database.GetLastError().find("unable to open"), std::string::npos) << database.GetLastError();
    EXPECT_FALSE(database.Execute("SELECT 1"));
    EXPECT_FALSE(Query(database, "SELECT 1").IsValid());
    EXPECT_FALSE(Transaction(database).IsActive());
}

TEST_F(QueryTest, SqlCanCallFunctionsOfABlob) {
    ASSERT_TRUE(database.AddFunction(
        "size_of", [](auto blob) -> Database::Value { return static_cast<std::int64_t>(blob.size()); }));
    ASSERT_TRUE(database.AddFunction(
        "first_of", [](auto blob) -> Database::Value { return std::string(1, static_cast<char>(blob[0])); }));
    Query query(database, "SELECT size_of(x'414243'), size_of(NULL), first_of(x'414243')");
    ASSERT_EQ(query.Step(), StepResult::Row);
    EXPECT_EQ(query.GetColumnAsInt(0), 3);
    EXPECT_EQ(query.GetColumnAsInt(1), 0);
    EXPECT_EQ(query.GetColumnAsString(2), "A");
}
