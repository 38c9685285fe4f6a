// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <string>

#include "service/ledger/Ledger.h"
#include "service/store/HistoryReader.h"
#include "service/store/Store.h"
#include "tests/service/ledger/Samples.h"
#include "tests/support/TemporaryFolder.h"

namespace service {

/** A store in a folder of its own, which goes with the test. */
class StoreFixture : public testing::Test {
  protected:
    StoreFixture() { reopen(); }

    void reopen() {
        store.reset();
        std::string error;
        store = Store::open(path, error);
        ASSERT_TRUE(store) << error;
    }

    std::unique_ptr<HistoryReader> reader() {
        std::string error;
        auto opened = HistoryReader::open(path, error);
        EXPECT_TRUE(opened) << error;
        return opened;
    }

    /** Counts samples at a second and writes what has changed. */
    void write(Ledger& ledger, const std::vector<TrafficSample>& samples, int second) {
        ledger.apply(samples, at(second));
        ASSERT_TRUE(store->append(ledger.takeChanges(at(second)))) << store->lastError();
    }

    /** Connections of a batch of their own, without applications. */
    void append(const std::vector<ConnectionRecord>& connections) {
        LedgerChanges changes;
        changes.connections = connections;
        ASSERT_TRUE(store->append(changes)) << store->lastError();
    }

    /** Does something to the database behind the store's back. */
    void interfere(const std::string& sql) {
        SQLite::Database database;
        ASSERT_TRUE(database.Open(path, SQLite::OpenMode::ReadWriteCreate) && database.Execute(sql))
            << database.GetLastError();
    }

    TemporaryFolder m_Folder;
    std::filesystem::path folder = m_Folder.path();
    std::filesystem::path path = folder / "history.db";
    std::unique_ptr<Store> store;
};

/** Brings connections back to the indexes of before there were blocks. */
inline constexpr char undoBlocks[] =
    "DROP INDEX connections_apart; DROP TABLE connection_blocks; DROP TABLE connection_times;"
    "DROP TABLE connection_kinds; DROP TABLE connection_received; DROP TABLE connection_sent;"
    "DROP TABLE connection_local; DROP TABLE connection_remote;"
    "UPDATE connections SET life = 7 WHERE life <> 33;"
    "CREATE INDEX connections_by_time ON connections (life, started, ended, protocol);"
    "CREATE INDEX connections_by_application ON connections (application, life, started, ended, protocol);";

/** Makes every write fail until the second is run. */
inline constexpr char breakWrites[] =
    "CREATE TRIGGER broken BEFORE INSERT ON counting BEGIN SELECT RAISE(ABORT, 'broken on purpose'); END";
inline constexpr char mendWrites[] = "DROP TRIGGER broken";

}  // namespace service
