// SPDX-License-Identifier: GPL-3.0-or-later

// What lists of many connections cost: writing them, filtering and sorting them by every field in both directions,
// reading a row; beside a plain table without any index that is asked for `ORDER BY` in the same run.
// Usage: connections_bench FILE COUNT; FILE is written anew.

#include <malloc.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <random>
#include <string>
#include <vector>

#include "bench/PeakMemory.h"
#include "service/store/HistoryReader.h"
#include "service/store/Store.h"
#include "service/store/StoreBatch.h"

namespace {

using namespace service;
using namespace std::chrono;

constexpr Moment present{seconds(1'763'720'123)};
constexpr days span{3 * 365};
constexpr int applicationCount = 40;
constexpr int connectionsPerAppend = 1000;

[[noreturn]] void giveUp(const std::string& reason) {
    std::fprintf(stderr, "%s\n", reason.c_str());
    std::exit(1);
}

template <class Action>
double timeMs(Action action) {
    const auto start = steady_clock::now();
    action();
    return duration<double, std::milli>(steady_clock::now() - start).count();
}

/** Three years of a desktop that talks to many addresses, a fifth of it over IPv6. */
class Traffic {
  public:
    explicit Traffic(int total) : m_Total(total) {}

    LedgerChanges next() {
        move();
        m_Changes.connections.clear();
        for (int i = 0; i < connectionsPerAppend; ++i) {
            m_Changes.connections.push_back(connection());
        }
        m_Changes.moment = m_Changes.connections.back().start;
        return m_Changes;
    }

  private:
    void move() {
        ApplicationRecord application;
        application.id = 1;
        application.path = "/usr/bin/application";
        m_Changes.totals.counters.add(ProtocolClass::Tcp, {10'000, 1'000}, {9'000, 900});
        application.counters = m_Changes.totals.counters;
        m_Changes.applications = {application};
    }

    ConnectionRecord connection() {
        ConnectionRecord connection;
        connection.id = m_Changes.nextConnectionId++;
        connection.applicationId = below(applicationCount) + 1;
        connection.start = present - span + seconds(seconds(span).count() * connection.id / m_Total);
        connection.end = std::min(connection.start + seconds(size(0, 10)), present);
        connection.direction = below(20) == 0 ? Direction::Input : Direction::Output;
        connection.socketType = below(4) == 0 ? 2 : 1;
        connection.socketProtocol = connection.socketType == 2 ? 17 : 6;
        connection.bytes = {size(4, 18), size(3, 14)};
        const int family = below(5) == 0 ? IpAddress::IPv6 : IpAddress::IPv4;
        connection.socketDomain = family == IpAddress::IPv6 ? 10 : 2;
        connection.local = address(family, below(3), 32768 + below(28232));
        connection.remote =
            address(family, static_cast<int>(size(2, 12)), below(5) == 0 ? below(65536) : 443);
        return connection;
    }

    IpAddress address(int family, int host, int port) {
        IpAddress address;
        address.family = family;
        address.port = static_cast<std::uint16_t>(port);
        std::mt19937 bytes(static_cast<unsigned>(host));
        std::generate_n(address.address.begin(), IpAddress::addressLength(family), [&] { return bytes(); });
        return address;
    }

    int below(int limit) { return static_cast<int>(m_Random() % static_cast<unsigned>(limit)); }

    /** Between e^least and e^most, as many of each order of magnitude. */
    std::int64_t size(double least, double most) {
        return static_cast<std::int64_t>(std::exp(std::uniform_real_distribution(least, most)(m_Random)));
    }

    const int m_Total;
    std::mt19937 m_Random{1};
    LedgerChanges m_Changes;
};

std::unique_ptr<Store> openStore(const std::string& path) {
    std::string error;
    auto store = Store::open(path, error);
    if (!store || !store->load(present)) {
        giveUp(error);
    }
    return store;
}

void write(const std::string& path, int count) {
    const auto store = openStore(path);
    Traffic traffic(count);
    StoreBatch batch(*store);
    std::vector<double> times;
    for (int i = 0; i < count; i += connectionsPerAppend) {
        const LedgerChanges changes = traffic.next();
        times.push_back(timeMs([&] {
            if (!batch.append(changes)) {
                giveUp(store->lastError());
            }
        }));
    }
    if (!batch.commit()) {
        giveUp(store->lastError());
    }
    std::ranges::sort(times);
    std::printf("1,000 connections written in %.1f ms (median), %.1f at most\n", times[times.size() / 2],
                times.back());
}

ConnectionQuery queryFor(Moment from, int field, SortDirection direction) {
    ConnectionQuery query{.from = from, .to = present, .application = {}, .socketProtocol = {}};
    query.sortField = static_cast<ConnectionSortField>(field);
    query.sortDirection = direction;
    return query;
}

constexpr std::array fieldNames{"start", "end", "direction", "received", "sent", "local", "remote"};

/** Every field in both directions, then rows from all over the list. */
void measureLists(HistoryReader& reader, Moment from, const char* what, std::vector<double>& ascendingMs) {
    std::vector<ConnectionId> ids;
    for (int field = 0; field < static_cast<int>(fieldNames.size()); ++field) {
        std::array<double, 2> ms{};
        for (const auto direction : {SortDirection::Ascending, SortDirection::Descending}) {
            ids = std::vector<ConnectionId>();
            ms[direction == SortDirection::Ascending ? 0 : 1] =
                timeMs([&] { ids = reader.connections(queryFor(from, field, direction)); });
        }
        std::printf("%s, %zu rows by %-9s %8.1f ms ascending, %8.1f descending\n", what, ids.size(),
                    fieldNames[static_cast<std::size_t>(field)], ms[0], ms[1]);
        ascendingMs.push_back(ms[0]);
    }
    DaemonConnectionInfo info;
    std::vector<double> rows;
    for (std::size_t i = 0; i < 1000; ++i) {
        rows.push_back(timeMs([&] { reader.connection(ids[ids.size() * i / 1000], info); }));
    }
    std::ranges::sort(rows);
    std::printf("%s, a row of those: %.3f ms (median), %.3f at most\n", what, rows[500], rows.back());
}

/** The same rows in a table without an index, sorted by SQLite. */
void measurePlain(const std::string& path, const std::vector<double>& ascendingMs) {
    SQLite::Database database;
    if (!database.Open(path + ".plain", SQLite::OpenMode::ReadWriteCreate) ||
        !database.Execute("ATTACH '" + path +
                          "' AS history; CREATE TABLE plain AS SELECT id, started, ended, "
                          "direction, received, sent, local, remote FROM history.connections")) {
        giveUp(database.GetLastError());
    }
    constexpr std::array columns{"started", "ended", "direction", "received", "sent", "local", "remote"};
    for (const std::size_t field : {0, 3, 6}) {
        SQLite::Query rows(database, std::string("SELECT id FROM plain ORDER BY ") + columns[field] + ", id");
        std::vector<ConnectionId> ids;
        const double ms = timeMs([&] {
            while (rows.Step() == SQLite::StepResult::Row) {
                ids.push_back(rows.GetColumnAsInt(0));
            }
        });
        std::printf("plain table, %zu rows by %-9s %8.1f ms, %.1f times as long\n", ids.size(),
                    fieldNames[field], ms, ms / ascendingMs[field]);
    }
}

void run(const std::string& path, int count) {
    for (const char* end : {"", "-wal", "-shm", ".plain"}) {
        std::filesystem::remove(path + end);
    }
    write(path, count);
    openStore(path);  // brings the log into the database
    std::printf("%.1f MB per million connections\n",
                static_cast<double>(std::filesystem::file_size(path)) / count);
    std::string error;
    const auto reader = HistoryReader::open(path, error);
    if (!reader) {
        giveUp(error);
    }
    bench::forgetPeakMemory();
    const double before = bench::peakMemory();
    std::vector<double> wholeMs;
    std::vector<double> monthsMs;
    measureLists(*reader, present - span, "everything", wholeMs);
    measureLists(*reader, present - span / 12, "3 of 36 months", monthsMs);
    std::printf("peak memory: %.1f MB, %.1f before\n", bench::peakMemory(), before);
    measurePlain(path, wholeMs);
}

}  // namespace

int main(int argc, char** argv) {
    const int count = argc == 3 ? std::atoi(argv[2]) : 0;
    if (count < connectionsPerAppend) {
        std::fprintf(stderr, "usage: connections_bench FILE COUNT\n");
        return 2;
    }
    ::mallopt(M_MMAP_THRESHOLD, 1 << 20);  // as in the daemon
    std::setvbuf(stdout, nullptr, _IOLBF, 0);
    run(argv[1], count);
    return 0;
}
