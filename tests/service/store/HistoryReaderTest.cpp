// SPDX-License-Identifier: GPL-3.0-or-later
#include "service/store/HistoryReader.h"

#include <time.h>

#include <algorithm>
#include <functional>
#include <random>
#include <tuple>

#include "libs/utils/src/StringUtils.h"
#include "tests/service/store/StoreFixture.h"

namespace service {

namespace {

IpAddress addressOf(const std::string& text, int family, int port) {
    IpAddress address = stringToIp(text, family);
    address.port = static_cast<std::uint16_t>(port);
    return address;
}

/** Has connections whose values are drawn so that many are equal and the lives are of every length. */
class HistoryReaderTest : public StoreFixture {
  protected:
    std::vector<ConnectionRecord> appendConnections(ConnectionId last, ConnectionId first = 1) {
        std::vector<ConnectionRecord> connections;
        for (ConnectionId id = first; id <= last; ++id) {
            ConnectionRecord connection;
            connection.id = id;
            connection.applicationId = below(3);
            connection.start = at(below(1000) * 10'000);
            connection.end = connection.start + std::chrono::seconds(length());
            connection.isOpen = below(10) == 0;
            connection.direction = static_cast<Direction>(below(3));
            connection.socketProtocol = std::array{6, 17, 1}[random() % 3];
            connection.bytes = {.received = below(20), .sent = std::int64_t{below(9)} << 40};
            connection.local = address();
            connection.remote = address();
            connections.push_back(connection);
        }
        append(connections);
        return connections;
    }

    int below(int limit) { return static_cast<int>(random() % static_cast<unsigned>(limit)); }
    int length() { return below(1 << below(24)); }

    IpAddress address() {
        const std::string last = std::array{"1", "9", "10", "200"}[random() % 4];
        const int port = std::array{9, 80, 443, 65535}[random() % 4];
        return below(2) == 0 ? addressOf("10.0.0." + last, IpAddress::IPv4, port)
                             : addressOf("0.0.0.0.0.0.0.0.0.0.0.0.0.0.0." + last, IpAddress::IPv6, port);
    }

    std::mt19937 random{5};
};

std::vector<ConnectionId> idsOf(const std::vector<ConnectionRecord>& connections) {
    std::vector<ConnectionId> ids;
    std::ranges::transform(connections, std::back_inserter(ids), &ConnectionRecord::id);
    return ids;
}

}  // namespace

TEST_F(HistoryReaderTest, FindsEveryLifeThatTouchesTheRange) {
    const std::vector<ConnectionRecord> connections = appendConnections(2000);
    const auto history = reader();
    for (int round = 0; round < 200; ++round) {
        ConnectionQuery query;
        query.from = round % 2 == 0 ? connections[random() % 2000].end : at(below(15'000'000));
        query.to = query.from + std::chrono::seconds(round % 3 == 0 ? 0 : length());
        if (below(2) == 0) {
            query.application = below(4);
        }
        if (below(2) == 0) {
            query.socketProtocol = 17;
        }
        std::vector<ConnectionRecord> expected;
        std::ranges::copy_if(connections, std::back_inserter(expected), [&](const ConnectionRecord& row) {
            return row.start <= query.to && (row.isOpen || row.end >= query.from) &&
                   row.applicationId == query.application.value_or(row.applicationId) &&
                   row.socketProtocol == query.socketProtocol.value_or(row.socketProtocol);
        });
        ASSERT_EQ(history->connections(query), idsOf(expected)) << "in round " << round;
    }
}

TEST_F(HistoryReaderTest, SortsByTheFieldAndThenById) {
    using Less = std::function<bool(const ConnectionRecord&, const ConnectionRecord&)>;
    const auto by = [](auto key) -> Less {
        return [key](const ConnectionRecord& a, const ConnectionRecord& b) { return key(a) < key(b); };
    };
    const auto addressKey = [](const IpAddress& address) {
        return std::tuple(address.family, address.address, address.port);
    };
    const std::vector<std::pair<ConnectionSortField, Less>> fields = {
        {ConnectionSortField::StartTime, by([](const auto& row) { return row.start; })},
        {ConnectionSortField::EndTime,
         by([](const auto& row) { return row.isOpen ? Moment::max() : row.end; })},
        {ConnectionSortField::Direction, by([](const auto& row) {
             return std::array{"Input", "Output", "Undefined"}[static_cast<std::size_t>(row.direction)][0];
         })},
        {ConnectionSortField::ReceivedBytes, by([](const auto& row) { return row.bytes.received; })},
        {ConnectionSortField::SentBytes, by([](const auto& row) { return row.bytes.sent; })},
        {ConnectionSortField::LocalAddress, by([&](const auto& row) { return addressKey(row.local); })},
        {ConnectionSortField::RemoteAddress, by([&](const auto& row) { return addressKey(row.remote); })},
        {ConnectionSortField::None, by([](const auto&) { return 0; })},
    };
    std::vector<ConnectionRecord> connections = appendConnections(3000);
    std::ranges::copy(appendConnections(3300, 3001), std::back_inserter(connections));  // too few for a block
    SQLite::Database database;
    ASSERT_TRUE(database.Open(path, SQLite::OpenMode::ReadOnly));
    ConnectionLister lister(database, 10'000);  // sorts in several parts
    const auto list = [&lister](const ConnectionQuery& query) {
        std::vector<ConnectionId> ids;
        EXPECT_TRUE(lister.list(query, ids, {}, [](std::size_t) {})) << lister.lastError();
        return ids;
    };
    for (const auto& [field, less] : fields) {
        ConnectionQuery query{.from = at(0), .to = Moment::max(), .application = {}, .socketProtocol = {}};
        query.sortField = field;
        EXPECT_EQ(list(query), idsOf(connections)) << "unsorted";
        std::vector<ConnectionRecord> sorted = connections;
        std::ranges::stable_sort(sorted, less);
        query.sortDirection = SortDirection::Ascending;
        EXPECT_EQ(list(query), idsOf(sorted)) << static_cast<int>(field);
        sorted = connections;
        std::ranges::stable_sort(sorted, [&](const auto& a, const auto& b) { return less(b, a); });
        query.sortDirection = SortDirection::Descending;
        EXPECT_EQ(list(query), idsOf(sorted)) << static_cast<int>(field);
        query.newest = 1500;
        std::erase_if(sorted, [](const ConnectionRecord& row) { return row.id > 1500; });
        EXPECT_EQ(list(query), idsOf(sorted)) << static_cast<int>(field);
    }
}

TEST_F(HistoryReaderTest, AListThatIsStoppedHasNothing) {
    appendConnections(2000);
    const ConnectionQuery query{.from = at(0),
                                .to = Moment::max(),
                                .application = {},
                                .socketProtocol = {},
                                .sortField = ConnectionSortField::SentBytes,
                                .sortDirection = SortDirection::Ascending};
    std::stop_source stop;
    std::size_t counted = 0;
    const auto stopAtTheCount = [&](std::size_t count) {
        counted = count;
        stop.request_stop();
    };
    EXPECT_TRUE(reader()->connections(query, stop.get_token(), stopAtTheCount).empty());
    EXPECT_EQ(counted, 2000u);
}

TEST(PackedNumbersTest, GivesBackWhatWasPackedAndRefusesDamagedBytes) {
    std::mt19937_64 random(7);
    for (int bits = 0; bits <= 64; bits += 8) {
        for (const int different : {1, 3, 1000}) {
            Slots slots;
            PackedNumbers::Numbers numbers{};
            for (int slot = bits; slot < Slots::count; slot += 1 + static_cast<int>(random() % 4)) {
                const std::uint64_t value =
                    random() % static_cast<unsigned>(different) * 0x9e37'79b9'7f4a'7c15;
                slots.add(slot);
                numbers[static_cast<std::size_t>(slot)] = bits == 0 ? 5 : value >> (64 - bits);
            }
            std::vector<std::uint8_t> bytes;
            PackedNumbers::pack(numbers, slots, bytes);
            bytes.resize(bytes.size() + PackedNumbers::padding);
            PackedNumbers packed;
            std::span<const std::uint8_t> rest = bytes;
            ASSERT_TRUE(packed.take(rest));
            slots.forEach(
                [&](int slot) { ASSERT_EQ(packed[slot], numbers[static_cast<std::size_t>(slot)]); });
            rest = std::span(bytes).first(bytes.size() - 1);
            EXPECT_FALSE(packed.take(rest));
        }
    }
}

TEST_F(HistoryReaderTest, ARowComesWithLocalTimesAsItStandsNow) {
    ::setenv("TZ", "Europe/Berlin", 1);
    ::tzset();
    ConnectionRecord connection = appendConnections(1)[0];
    const auto history = reader();
    DaemonConnectionInfo info;
    ASSERT_TRUE(history->connection(1, info));
    connection.applicationId = 5;
    connection.end = Moment(std::chrono::seconds(1'720'000'000));  // 2024-07-03 09:46:40 UTC
    connection.bytes = {.received = 5'000'000'000, .sent = 3};
    append({connection});
    ASSERT_TRUE(history->connection(1, info));
    EXPECT_EQ(info.applicationId, 5);
    EXPECT_EQ(Time::toString(info.endTime), "2024-07-03 11:46:40");
    EXPECT_EQ(info.receivedBytes, 5'000'000'000);
    EXPECT_EQ(info.sendedBytes, 3);
    const ConnectionQuery atTheEnd{
        .from = connection.end, .to = connection.end, .application = {}, .socketProtocol = {}};
    EXPECT_EQ(history->connections(atTheEnd), std::vector<ConnectionId>{1});

    connection.id = 2;
    connection.start = Moment(std::chrono::seconds(1'733'000'000));  // 2024-11-30 20:53:20 UTC
    connection.direction = Direction::Output;
    connection.socketDomain = 10;
    connection.socketType = 1;
    connection.socketProtocol = 6;
    connection.remote = addressOf("32.1.13.184.0.0.0.0.0.0.0.0.0.0.0.255", IpAddress::IPv6, 65535);
    connection.local = addressOf("192.168.0.1", IpAddress::IPv4, 443);
    append({connection});
    ASSERT_TRUE(history->connection(2, info));
    EXPECT_EQ(Time::toString(info.startTime), "2024-11-30 21:53:20");
    EXPECT_EQ(std::tuple(info.id, info.direction, info.socketDomain, info.socketType, info.socketProtocol),
              std::tuple(2, 1, 10, 1, 6));
    EXPECT_TRUE(info.remoteAddress == connection.remote);
    EXPECT_TRUE(info.localAddress == connection.local);
    EXPECT_FALSE(history->connection(3, info));
    ::unsetenv("TZ");
    ::tzset();
}

TEST_F(HistoryReaderTest, AQuietConnectionLastsUntilItIsClosed) {
    ::setenv("TZ", "UTC", 1);
    ::tzset();
    Ledger ledger(store->load(at(0)).value());
    const auto history = reader();
    const auto foundAt = [&](int second) {
        return history->connections(
            {.from = at(second), .to = at(second), .application = {}, .socketProtocol = {}});
    };
    const auto endOf = [&](ConnectionId id) {
        DaemonConnectionInfo info;
        EXPECT_TRUE(history->connection(id, info));
        return Time::toString(info.endTime);
    };
    using Ids = std::vector<ConnectionId>;
    write(ledger, {sampleOf(1, "/a", {1, 0}), sampleOf(2, "/b", {1, 0}), sampleOf(3, "/b", {1, 0})}, 10);
    write(ledger, {sampleOf(2, "/b", {1, 0})}, 500);
    EXPECT_EQ(foundAt(400), (Ids{1, 2, 3})) << "1 and 3 have been quiet since second 10";
    EXPECT_EQ(foundAt(-1), Ids{});
    EXPECT_EQ(endOf(1), "2023-11-14 22:21:40") << "the last moment that was written, 500";
    write(ledger, {sampleOf(1, "/a", {}, true)}, 600);
    EXPECT_EQ(foundAt(600), (Ids{1, 2, 3}));
    EXPECT_EQ(foundAt(601), (Ids{2, 3}));
    EXPECT_EQ(endOf(1), "2023-11-14 22:23:20");

    reopen();
    ASSERT_TRUE(store->load(at(9000)));
    EXPECT_EQ(foundAt(600), (Ids{1, 2, 3}))
        << "the lives of the leftovers are closed with their right lengths";
    EXPECT_EQ(foundAt(601), Ids{});
    EXPECT_EQ(endOf(3), "2023-11-14 22:23:20");
    ::unsetenv("TZ");
    ::tzset();
}

TEST_F(HistoryReaderTest, IsNotOpenedOnSomethingElse) {
    std::string error;
    EXPECT_FALSE(HistoryReader::open(folder / "missing.db", error));
    SQLite::Database other;
    ASSERT_TRUE(other.Open(folder / "other.db", SQLite::OpenMode::ReadWriteCreate));
    ASSERT_TRUE(other.Execute("CREATE TABLE something (x)"));
    EXPECT_FALSE(HistoryReader::open(folder / "other.db", error));
    EXPECT_NE(error.find("no such table"), std::string::npos) << error;
}

}  // namespace service
