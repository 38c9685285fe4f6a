// SPDX-License-Identifier: GPL-3.0-or-later
#include "service/store/HistoryReader.h"

#include <time.h>

#include <algorithm>
#include <random>
#include <tuple>

#include "libs/utils/src/StringUtils.h"
#include "tests/service/store/StoreFixture.h"

namespace service {

using HistoryReaderTest = StoreFixture;

namespace {

ConnectionRecord connectionWith(ConnectionId id, int start, int end) {
    ConnectionRecord connection;
    connection.id = id;
    connection.applicationId = 1 + id % 2;
    connection.start = at(start);
    connection.end = at(end);
    connection.socketProtocol = id % 3 == 0 ? 17 : 6;
    return connection;
}

ConnectionQuery between(int from, int to) {
    return {.from = at(from), .to = at(to), .application = {}, .socketProtocol = {}};
}

/** The machine's zone for as long as the object lives. */
class LocalZone {
  public:
    explicit LocalZone(const char* name) {
        ::setenv("TZ", name, 1);
        ::tzset();
    }
    ~LocalZone() {
        ::unsetenv("TZ");
        ::tzset();
    }
};

IpAddress addressOf(const std::string& text, int family, int port) {
    IpAddress address = stringToIp(text, family);
    address.port = static_cast<std::uint16_t>(port);
    return address;
}

}  // namespace

TEST_F(HistoryReaderTest, FindsConnectionsWhoseLifeTouchesTheRange) {
    append({connectionWith(1, 10, 20), connectionWith(2, 20, 30), connectionWith(3, 0, 99),
            connectionWith(4, 15, 15), connectionWith(5, 31, 40)});
    const auto history = reader();
    using Ids = std::vector<ConnectionId>;
    EXPECT_EQ(history->connections(between(20, 20)), (Ids{1, 2, 3}));
    EXPECT_EQ(history->connections(between(14, 16)), (Ids{1, 3, 4}));
    EXPECT_EQ(history->connections(between(21, 30)), (Ids{2, 3}));
    EXPECT_EQ(history->connections(between(0, 99)), (Ids{1, 2, 3, 4, 5}));
    EXPECT_EQ(history->connections(between(100, 200)), Ids{});
    ConnectionQuery query = between(0, 99);
    query.application = 2;
    EXPECT_EQ(history->connections(query), (Ids{1, 3, 5}));
    query.socketProtocol = 17;
    EXPECT_EQ(history->connections(query), Ids{3});
    query.application.reset();
    query.socketProtocol = 1;
    EXPECT_EQ(history->connections(query), Ids{});
}

TEST_F(HistoryReaderTest, FindsLivesOfEveryLengthInRangesOfEveryLength) {
    std::mt19937 random(5);
    const auto drawLength = [&] { return static_cast<int>(random() % (1u << random() % 24)); };
    std::vector<ConnectionRecord> connections;
    for (ConnectionId id = 1; id <= 2000; ++id) {
        const int start = static_cast<int>(random() % 10'000'000);
        connections.push_back(connectionWith(id, start, start + drawLength()));
    }
    append(connections);
    const auto history = reader();
    for (int round = 0; round < 100; ++round) {
        const int from = static_cast<int>(random() % 15'000'000);
        const ConnectionQuery query = between(from, from + drawLength());
        std::vector<ConnectionId> expected;
        for (const ConnectionRecord& connection : connections) {
            if (connection.start <= query.to && connection.end >= query.from) {
                expected.push_back(connection.id);
            }
        }
        ASSERT_EQ(history->connections(query), expected) << "in round " << round;
    }
}

TEST_F(HistoryReaderTest, ARowComesWithLocalTimesAndItsAddresses) {
    const LocalZone zone("Europe/Berlin");
    ConnectionRecord connection;
    connection.id = 77;
    connection.applicationId = 5;
    connection.start = Moment(std::chrono::seconds(1'720'000'000));  // 2024-07-03 09:46:40 UTC
    connection.end = Moment(std::chrono::seconds(1'733'000'000));    // 2024-11-30 20:53:20 UTC
    connection.direction = Direction::Output;
    connection.socketDomain = 10;
    connection.socketType = 1;
    connection.socketProtocol = 6;
    connection.bytes = {.received = 5'000'000'000, .sent = 3};
    connection.remote = addressOf("32.1.13.184.0.0.0.0.0.0.0.0.0.0.0.255", IpAddress::IPv6, 65535);
    connection.local = addressOf("192.168.0.1", IpAddress::IPv4, 443);
    append({connection});

    DaemonConnectionInfo info;
    ASSERT_TRUE(reader()->connection(77, info));
    EXPECT_EQ(info.id, 77);
    EXPECT_EQ(info.applicationId, 5);
    EXPECT_EQ(Time::toString(info.startTime), "2024-07-03 11:46:40");
    EXPECT_EQ(Time::toString(info.endTime), "2024-11-30 21:53:20");
    EXPECT_EQ(info.direction, 1);
    EXPECT_EQ(info.socketDomain, 10);
    EXPECT_EQ(info.socketType, 1);
    EXPECT_EQ(info.socketProtocol, 6);
    EXPECT_EQ(info.receivedBytes, 5'000'000'000);
    EXPECT_EQ(info.sendedBytes, 3);
    EXPECT_TRUE(info.remoteAddress == connection.remote);
    EXPECT_TRUE(info.localAddress == connection.local);
    EXPECT_FALSE(reader()->connection(78, info));
}

TEST_F(HistoryReaderTest, ARowIsReadAsItStandsNow) {
    ConnectionRecord connection = connectionWith(1, 0, 1);
    append({connection});
    const auto history = reader();
    DaemonConnectionInfo info;
    ASSERT_TRUE(history->connection(1, info));
    connection.applicationId = 9;
    connection.bytes = {.received = 44, .sent = 55};
    connection.end = at(5000);
    append({connection});
    EXPECT_EQ(history->connections(between(4000, 4000)), std::vector<ConnectionId>{1});
    ASSERT_TRUE(history->connection(1, info));
    EXPECT_EQ(info.applicationId, 9);
    EXPECT_EQ(info.receivedBytes, 44);
    EXPECT_EQ(info.sendedBytes, 55);
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

/** Sorting is compared with one done here, on values drawn so that many are equal. */
class ConnectionOrderTest : public StoreFixture, public testing::WithParamInterface<ConnectionSortField> {
  protected:
    ConnectionOrderTest() {
        std::mt19937 random(4);
        for (ConnectionId id = 1; id <= 300; ++id) {
            ConnectionRecord connection = connectionWith(id, static_cast<int>(random() % 10), 20);
            connection.end += std::chrono::seconds(random() % 10);
            connection.direction = static_cast<Direction>(random() % 3);
            connection.bytes = {.received = drawBytes(random), .sent = drawBytes(random)};
            connection.local = drawAddress(random);
            connection.remote = drawAddress(random);
            connections.push_back(connection);
        }
        append(connections);
    }

    static std::int64_t drawBytes(std::mt19937& random) {
        return std::array<std::int64_t, 4>{0, 9, 10, 1LL << 40}[random() % 4];
    }

    static IpAddress drawAddress(std::mt19937& random) {
        const std::string last = std::array{"1", "9", "10", "200"}[random() % 4];
        const int port = std::array{9, 80, 443, 65535}[random() % 4];
        return random() % 2 == 0 ? addressOf("10.0.0." + last, IpAddress::IPv4, port)
                                 : addressOf("0.0.0.0.0.0.0.0.0.0.0.0.0.0.0." + last, IpAddress::IPv6, port);
    }

    /** Less, equal or more by the field alone. */
    static std::strong_ordering compare(const ConnectionRecord& a, const ConnectionRecord& b) {
        const auto byAddress = [](const IpAddress& left, const IpAddress& right) {
            return std::tie(left.family, left.address, left.port) <=>
                   std::tie(right.family, right.address, right.port);
        };
        const auto name = [](Direction direction) {
            return std::array<std::string, 3>{"Input", "Output",
                                              "Undefined"}[static_cast<std::size_t>(direction)];
        };
        switch (GetParam()) {
            case ConnectionSortField::StartTime:
                return a.start <=> b.start;
            case ConnectionSortField::EndTime:
                return a.end <=> b.end;
            case ConnectionSortField::Direction:
                return name(a.direction) <=> name(b.direction);
            case ConnectionSortField::ReceivedBytes:
                return a.bytes.received <=> b.bytes.received;
            case ConnectionSortField::SentBytes:
                return a.bytes.sent <=> b.bytes.sent;
            case ConnectionSortField::LocalAddress:
                return byAddress(a.local, b.local);
            case ConnectionSortField::RemoteAddress:
                return byAddress(a.remote, b.remote);
            case ConnectionSortField::None:
                break;
        }
        return std::strong_ordering::equal;
    }

    std::vector<ConnectionId> sorted(SortDirection direction) {
        std::vector<ConnectionRecord> rows = connections;
        std::ranges::stable_sort(rows, [&](const ConnectionRecord& a, const ConnectionRecord& b) {
            return direction == SortDirection::Ascending    ? compare(a, b) < 0
                   : direction == SortDirection::Descending ? compare(a, b) > 0
                                                            : false;
        });
        std::vector<ConnectionId> ids;
        std::ranges::transform(rows, std::back_inserter(ids), &ConnectionRecord::id);
        return ids;
    }

    std::vector<ConnectionRecord> connections;
};

TEST_P(ConnectionOrderTest, IsByTheFieldAndThenById) {
    const auto history = reader();
    ConnectionQuery query = between(0, 99);
    query.sortField = GetParam();
    for (const auto direction : {SortDirection::Ascending, SortDirection::Descending, SortDirection::None}) {
        query.sortDirection = direction;
        EXPECT_EQ(history->connections(query), sorted(direction)) << static_cast<int>(direction);
    }
}

INSTANTIATE_TEST_SUITE_P(EveryField, ConnectionOrderTest,
                         testing::Values(ConnectionSortField::StartTime, ConnectionSortField::EndTime,
                                         ConnectionSortField::Direction, ConnectionSortField::ReceivedBytes,
                                         ConnectionSortField::SentBytes, ConnectionSortField::LocalAddress,
                                         ConnectionSortField::RemoteAddress, ConnectionSortField::None));

}  // namespace service
