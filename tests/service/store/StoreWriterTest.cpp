// SPDX-License-Identifier: GPL-3.0-or-later
#include "service/store/StoreWriter.h"

#include <unistd.h>

#include "tests/service/store/StoreFixture.h"

namespace service {

using StoreWriterTest = StoreFixture;

namespace {

/** Catches what is written to standard error, to be read line by line. */
class ErrorOutput {
  public:
    ErrorOutput() : m_Original(::dup(STDERR_FILENO)) {
        EXPECT_EQ(::pipe(m_Pipe), 0);
        ::dup2(m_Pipe[1], STDERR_FILENO);
    }
    ~ErrorOutput() {
        ::dup2(m_Original, STDERR_FILENO);
        for (const int descriptor : {m_Original, m_Pipe[0], m_Pipe[1]}) {
            ::close(descriptor);
        }
    }

    /** Waits for the next line. */
    std::string readLine() {
        std::string line;
        for (char c = 0; ::read(m_Pipe[0], &c, 1) == 1 && c != '\n';) {
            line += c;
        }
        return line;
    }

  private:
    int m_Original;
    int m_Pipe[2] = {-1, -1};
};

}  // namespace

TEST_F(StoreWriterTest, WhatTheDiskDoesNotTakeFollowsLaterAndIsLoggedOnceEachWay) {
    Ledger ledger(store->load(at(0)).value());
    ErrorOutput log;
    auto writer = std::make_unique<StoreWriter>(ledger, *store, [](bool) {});
    interfere(breakWrites);
    ledger.apply({sampleOf(1, "/a", {10, 0}, true)}, at(1));
    writer->wake();
    EXPECT_NE(log.readLine().find("waits until it can be written: broken on purpose"), std::string::npos);
    ledger.apply({sampleOf(2, "/b", {5, 0})}, at(2));
    writer->wake();  // may fail once more, of which nothing is said
    interfere(mendWrites);
    writer->wake();
    EXPECT_NE(log.readLine().find("goes on; connections lost meanwhile: 0"), std::string::npos);

    ledger.apply({sampleOf(2, "/b", {100, 0})}, at(3));
    writer.reset();  // writes what is left
    const auto history = reader();
    EXPECT_EQ(history->totalUpTo({}, {}, Moment::max()).received, 115);
    DaemonConnectionInfo info;
    ASSERT_TRUE(history->connection(1, info)) << "it had left the ledger when the disk came back";
    EXPECT_EQ(info.receivedBytes, 10);
    EXPECT_TRUE(history->connection(2, info));
}

TEST_F(StoreWriterTest, WhatCannotBeDroppedIsLoggedOnceEachWayAndTheCountingGoesOn) {
    Ledger ledger(store->load(at(0)).value());
    write(ledger, {sampleOf(1, "/a", {10, 0}, true)}, 1);
    LedgerChanges later;
    later.totals = ledger.totals();
    for (later.moment = at(60); later.moment < at(0) + std::chrono::days(9);
         later.moment += std::chrono::hours(1)) {
        ASSERT_TRUE(store->append(later));
    }
    interfere("CREATE TRIGGER stuck BEFORE DELETE ON connections BEGIN SELECT RAISE(ABORT, 'stuck'); END");
    ErrorOutput log;
    auto writer = std::make_unique<StoreWriter>(ledger, *store, [](bool) {});
    writer->setRetention(std::chrono::days(7));
    EXPECT_NE(log.readLine().find("cannot be dropped now: stuck"), std::string::npos);
    ledger.apply({sampleOf(2, "/b", {5, 0})}, at(2));
    writer->wake();
    interfere("DROP TRIGGER stuck");
    writer->setRetention(std::chrono::days(7));
    EXPECT_NE(log.readLine().find("is dropped now"), std::string::npos);
    writer.reset();
    EXPECT_EQ(reader()->totalUpTo({}, {}, Moment::max()).received, 15);
    DaemonConnectionInfo info;
    EXPECT_FALSE(reader()->connection(1, info));
    EXPECT_TRUE(reader()->connection(2, info));
}

}  // namespace service
