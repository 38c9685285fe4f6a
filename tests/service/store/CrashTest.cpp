// SPDX-License-Identifier: GPL-3.0-or-later

// NEVTORA_KILLS tells how often the daemon's store is killed; by default 20 times, which takes half a minute.

#include <signal.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cstdlib>
#include <iostream>
#include <random>
#include <thread>

#include "service/ledger/Ledger.h"
#include "service/store/Housekeeper.h"
#include "service/store/StoreWriter.h"
#include "service/traffic/Clock.h"
#include "tests/service/store/HistoryAudit.h"
#include "tests/service/store/StoreFixture.h"

namespace service {

namespace {

using namespace std::chrono;

/** A commit beside other programs takes that long at most; a disk that takes longer loses as much more. */
constexpr milliseconds longestCommit{400};

/** What a child that will be killed tells its parent. */
struct Diary {
    struct Entry {
        steady_clock::time_point counted;
        std::int64_t received;
    };
    std::array<Entry, 1 << 14> entries{};
    std::atomic<std::size_t> count = 0;
    std::atomic<std::int64_t> begun = 0;  ///< bytes of what is counted, and of what is just being counted
    std::atomic<std::int64_t> safe = 0;   ///< bytes that are on disk
    Moment now = at(0);                   ///< of a child with a clock of its own

    void add(std::int64_t received) {
        entries[count % entries.size()] = {steady_clock::now(), received};
        ++count;
    }

    /** How old what is not among the first `received` bytes was at `moment`, at most. */
    milliseconds oldestAfter(std::int64_t received, steady_clock::time_point moment) const {
        steady_clock::duration oldest{};
        for (std::size_t i = 0; i < std::min(count.load(), entries.size()); ++i) {
            oldest = entries[i].received > received ? std::max(oldest, moment - entries[i].counted) : oldest;
        }
        return duration_cast<milliseconds>(oldest);
    }
};

/** Traffic of forty applications: some connections last, the others come and go. */
class Load {
  public:
    explicit Load(std::uint32_t seed) : m_Random(seed) {}

    /** Enters as many new connections, each of which ends at once. */
    void enter(Ledger& ledger, int connectionCount, Moment now, Diary& diary) {
        std::vector<TrafficSample> samples;
        std::int64_t received = ledger.totals().counters.total().received;
        for (int i = 0; i < connectionCount + 5; ++i) {
            const bool isShort = i < connectionCount;
            const std::uint64_t key = isShort ? m_NextKey++ : m_Random() % 40;
            const ByteCount moved{static_cast<int>(m_Random() % 1'000), 7};
            const auto path = "/" + std::to_string(key % 40);
            samples.push_back(sampleOf(key, path, moved, isShort, key % 3 == 0 ? 17 : 6));
            received += moved.received;
        }
        diary.begun = received;
        ledger.apply(samples, now);
        diary.add(received);
    }

  private:
    std::mt19937 m_Random;
    std::uint64_t m_NextKey = 1'000;
};

}  // namespace

class CrashTest : public StoreFixture {
  protected:
    CrashTest() {
        void* memory =
            ::mmap(nullptr, sizeof(Diary), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
        m_Diary = new (memory) Diary;
    }
    ~CrashTest() override { ::munmap(m_Diary, sizeof(Diary)); }

    /** As the daemon: the writer's thread takes what another counts, a thousand connections a second. */
    void countInRealTime(Store& writable) {
        Ledger ledger(*writable.load(systemClock()));
        Load load(static_cast<std::uint32_t>(ledger.totals().counters.total().received));
        StoreWriter writer(ledger, writable, [](auto...) {});
        for (;;) {
            load.enter(ledger, 10, systemClock(), *m_Diary);
            std::this_thread::sleep_for(milliseconds(10));
        }
    }

    /** Months pass, so that old seconds are dropped all the time. */
    void countAsFastAsCanBe(Store& writable) {
        Ledger ledger(*writable.load(m_Diary->now));
        Load load(static_cast<std::uint32_t>(ledger.totals().counters.total().received));
        Housekeeper keeper(writable, [this] { return m_Diary->now; });
        for (;;) {
            m_Diary->now += seconds(20);
            load.enter(ledger, 1, m_Diary->now, *m_Diary);
            if (!writable.append(ledger.takeChanges(m_Diary->now))) {
                ::_exit(1);
            }
            m_Diary->safe = ledger.totals().counters.total().received;
            for (int i = 0; i < 3 && keeper.hasWork(); ++i) {
                keeper.work();
            }
        }
    }

    /** Runs `work` on the store in a process of its own, which is killed after `life`. */
    template <class Work>
    steady_clock::time_point killAfter(milliseconds life, Work work) {
        const pid_t child = ::fork();
        if (child == 0) {
            std::string error;
            if (const auto writable = Store::open(path, error)) {
                work(*writable);
            }
            std::cerr << error << '\n';
            ::_exit(1);
        }
        std::this_thread::sleep_for(life);
        const auto moment = steady_clock::now();
        ::kill(child, SIGKILL);
        int status = 0;
        ::waitpid(child, &status, 0);
        EXPECT_TRUE(WIFSIGNALED(status)) << "it ended by itself";
        return moment;
    }

    /** Bytes received by all, once the history is found to be sound. */
    std::int64_t soundTotal() {
        reopen();  // as the next daemon
        EXPECT_TRUE(store->load(at(0)));
        store.reset();
        std::string error;
        const auto audit = HistoryAudit::open(path, error);
        EXPECT_TRUE(audit && audit->checkPages() && audit->checkSums()) << (audit ? audit->finding() : error);
        SQLite::Database database;
        EXPECT_TRUE(database.Open(path, SQLite::OpenMode::ReadOnly));
        SQLite::Query unequal(
            database,
            "SELECT count(*) FROM (SELECT application, iif(protocol = 6, 0, 1) AS class, sum(received) AS "
            "bytes, "
            "sum(payload_received) AS payload FROM connections GROUP BY 1, 2) AS lives JOIN "
            "(SELECT application, class, max(received) AS bytes, max(payload_received) AS payload FROM "
            "series "
            "GROUP BY 1, 2) AS totals USING (application, class) "
            "WHERE lives.bytes <> totals.bytes OR lives.payload <> totals.payload");
        EXPECT_EQ(unequal.Step(), SQLite::StepResult::Row) << unequal.GetLastError();
        EXPECT_EQ(unequal.GetColumnAsInt(0), 0) << "connections and series tell different sums";
        return reader()->totalUpTo({}, {}, Moment::max()).received;
    }

    Diary* m_Diary;  ///< shared with the children
    std::mt19937 m_Random{std::random_device{}()};
};

TEST_F(CrashTest, WhereverItIsKilledTheSumsAgreeAndNothingOlderThanASecondIsMissing) {
    store.reset();
    const char* asked = std::getenv("NEVTORA_KILLS");
    const int kills = asked != nullptr ? std::atoi(asked) : 20;
    milliseconds oldestMissing{0};
    std::int64_t written = 0;
    for (int kill = 0; kill < kills && !HasFailure(); ++kill) {
        SCOPED_TRACE(kill);
        if (kill % 40 == 0) {
            path += "+";  // a new one; what they hold is read whole each time
            m_Diary->now = at(0);
        }
        const std::int64_t before = m_Diary->begun = m_Diary->safe = soundTotal();
        m_Diary->count = 0;
        if (kill % 2 == 0) {
            const auto moment = killAfter(milliseconds(m_Random() % 2'500),
                                          [this](Store& writable) { countInRealTime(writable); });
            const std::int64_t found = soundTotal();
            const milliseconds missing = m_Diary->oldestAfter(found, moment);
            EXPECT_LE(missing, seconds(1) + longestCommit);
            EXPECT_GE(found, before);
            EXPECT_LE(found, m_Diary->begun);
            oldestMissing = std::max(oldestMissing, missing);
            written += found - before;
        } else {
            killAfter(milliseconds(m_Random() % 700),
                      [this](Store& writable) { countAsFastAsCanBe(writable); });
            const std::int64_t found = soundTotal();
            EXPECT_GE(found, m_Diary->safe);
            EXPECT_LE(found, m_Diary->begun);
        }
    }
    EXPECT_GT(written, 0) << "never killed after a write";
    std::cout << kills << " kills, the oldest byte that was missing: " << oldestMissing.count() << " ms\n";
}

}  // namespace service
