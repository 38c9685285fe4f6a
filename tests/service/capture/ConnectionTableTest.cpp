// SPDX-License-Identifier: GPL-3.0-or-later
#include "service/capture/ConnectionTable.h"

#include <gtest/gtest.h>
#include <sys/socket.h>

namespace service {
namespace {

const auto browser =
    std::make_shared<const ApplicationIdentity>(ApplicationIdentity{"/usr/bin/browser", "browser"});

SocketReport report(std::uint64_t cookie, ByteCount bytes, std::uint32_t inode = 100) {
    return {.cookie = cookie,
            .state = TcpState::Established,
            .socketDomain = AF_INET,
            .local = {IpAddress::IPv4, 50000, {10, 0, 0, 1}},
            .remote = {IpAddress::IPv4, 443, {10, 0, 0, 2}},
            .inode = inode,
            .payload = bytes,
            .overhead = {}};
}

SocketReport inState(TcpState state, SocketReport socket) {
    socket.state = state;
    return socket;
}

class ConnectionTableTest : public ::testing::Test {
  protected:
    /** A poll as the source makes it. */
    std::vector<TrafficSample> poll(const std::vector<SocketReport>& dump,
                                    const std::vector<SocketReport>& destroyed = {}, bool whole = true) {
        m_Now += std::chrono::seconds(1);
        m_Table.enterDump(dump, whole, m_Now);
        m_Table.enterOwners(m_Owners);
        for (const SocketReport& last : destroyed) {
            m_Table.enterDestroyed(last, m_Now);
        }
        return m_Table.takeSamples();
    }

    ConnectionTable m_Table{3};
    SocketOwners::Owners m_Owners{{100, browser}};
    Moment m_Now{};
};

TEST_F(ConnectionTableTest, CountsOldConnectionsFromTheFirstPollAndLaterOnesWhole) {
    const auto first = poll({report(1, {5000, 7000})});
    ASSERT_EQ(first.size(), 1U);
    EXPECT_EQ(first[0].moved, ByteCount{});

    const auto second = poll({report(1, {5010, 7000}), report(2, {30, 40})});
    ASSERT_EQ(second.size(), 2U);
    const bool swapped = second[0].connectionKey != first[0].connectionKey;
    EXPECT_EQ(second[swapped ? 1 : 0].moved, (ByteCount{10, 0}));
    EXPECT_EQ(second[swapped ? 0 : 1].moved, (ByteCount{30, 40}));
    EXPECT_EQ(second[swapped ? 0 : 1].opened, m_Now);

    EXPECT_TRUE(poll({report(1, {5010, 7000}), report(2, {30, 40})}).empty()) << "nothing moved";
}

TEST_F(ConnectionTableTest, CountsHeadersBesideThePayload) {
    const auto withOverhead = [](SocketReport socket, ByteCount overhead) {
        socket.overhead = overhead;
        return socket;
    };
    EXPECT_EQ(poll({withOverhead(report(1, {50, 70}), {104, 52})}).at(0).moved, ByteCount{});
    const auto samples = poll({withOverhead(report(1, {60, 70}), {156, 104})});
    ASSERT_EQ(samples.size(), 1U);
    EXPECT_EQ(samples[0].payload, (ByteCount{10, 0}));
    EXPECT_EQ(samples[0].moved, (ByteCount{62, 52})) << "an acknowledgement moves bytes, too";
}

TEST_F(ConnectionTableTest, HoldsBytesBackUntilSomebodyAcceptsAndIsFound) {
    poll({});
    for (int i = 0; i < 10; ++i) {
        EXPECT_TRUE(poll({report(1, {10, 0}, 0)}).empty());
    }
    m_Owners.clear();
    EXPECT_TRUE(poll({report(1, {20, 0})}).empty());
    EXPECT_EQ(m_Table.inodesWithoutOwner(), SocketOwners::Inodes{100});
    m_Owners[100] = browser;
    const auto samples = poll({report(1, {25, 10})});
    ASSERT_EQ(samples.size(), 1U);
    EXPECT_EQ(samples[0].application, browser);
    EXPECT_EQ(samples[0].moved, (ByteCount{25, 10}));
}

TEST_F(ConnectionTableTest, GivesUpSearchingAfterThreeTimes) {
    poll({});
    m_Owners.clear();
    EXPECT_TRUE(poll({report(1, {10, 10})}).empty());
    EXPECT_TRUE(poll({report(1, {20, 20})}).empty());
    const auto samples = poll({report(1, {30, 30})});
    ASSERT_EQ(samples.size(), 1U);
    EXPECT_EQ(samples[0].application->path, unknownApplicationPath);
    EXPECT_EQ(samples[0].moved, (ByteCount{30, 30}));
    EXPECT_TRUE(m_Table.inodesWithoutOwner().empty());
}

TEST_F(ConnectionTableTest, EndsWithTheLastBytesUnderTheOwnerItHad) {
    poll({report(1, {100, 100})});
    EXPECT_EQ(poll({inState(TcpState::FinWait1, report(1, {150, 100}, 0))}).at(0).application, browser);
    const auto samples = poll({}, {inState(TcpState::Close, report(1, {160, 120}, 0))});
    ASSERT_EQ(samples.size(), 1U);
    EXPECT_EQ(samples[0].application, browser);
    EXPECT_EQ(samples[0].moved, (ByteCount{10, 20}));
    EXPECT_TRUE(samples[0].closed);
    EXPECT_TRUE(poll({}).empty());
}

TEST_F(ConnectionTableTest, GuessesNothingOfAConnectionSeenOnlyAtItsEnd) {
    const SocketReport last = inState(TcpState::Close, report(1, {160, 120}, 0));
    EXPECT_TRUE(poll({}, {last}, false).empty()) << "how much of it is older than the baseline is not known";
    EXPECT_TRUE(poll({}).empty());
    EXPECT_TRUE(poll({}, {inState(TcpState::Close, report(2, {0, 0}, 0))}).empty()) << "never connected";
    const auto samples = poll({}, {last});
    ASSERT_EQ(samples.size(), 1U);
    EXPECT_EQ(samples[0].application->path, unknownApplicationPath);
    EXPECT_EQ(samples[0].moved, (ByteCount{160, 120}));
    EXPECT_EQ(samples[0].direction, Direction::Undefined) << "nor who opened it";
    EXPECT_TRUE(samples[0].closed);
}

TEST_F(ConnectionTableTest, EndsAfterItWasMissingFromSeveralWholeDumps) {
    const auto key = poll({report(1, {100, 100})}).at(0).connectionKey;
    EXPECT_TRUE(poll({}).empty());
    EXPECT_TRUE(poll({}).empty());
    EXPECT_EQ(poll({report(1, {101, 100})}).size(), 1U) << "it was only skipped";
    EXPECT_TRUE(poll({}).empty());
    EXPECT_TRUE(poll({}).empty());
    EXPECT_TRUE(poll({}, {}, false).empty()) << "a dump that failed says nothing";
    const auto samples = poll({});
    ASSERT_EQ(samples.size(), 1U);
    EXPECT_EQ(samples[0].connectionKey, key);
    EXPECT_TRUE(samples[0].closed);
    EXPECT_TRUE(poll({}, {report(1, {101, 100})}).empty()) << "the late notice is not another connection";
}

TEST_F(ConnectionTableTest, NeverReportsNegativeBytes) {
    poll({report(1, {100, 100})});
    EXPECT_TRUE(poll({report(1, {100, 90})}).empty());
    const auto samples = poll({report(1, {100, 105})});
    ASSERT_EQ(samples.size(), 1U);
    EXPECT_EQ(samples[0].moved, (ByteCount{0, 5}));
}

TEST_F(ConnectionTableTest, TakesASocketThatWasConnectedAnewForAnotherConnection) {
    const auto key = poll({report(1, {100, 100})}).at(0).connectionKey;
    SocketReport elsewhere = report(1, {7, 8});
    elsewhere.remote.port = 444;
    const auto samples = poll({elsewhere});
    ASSERT_EQ(samples.size(), 2U);
    EXPECT_TRUE(samples[0].closed);
    EXPECT_EQ(samples[0].connectionKey, key);
    EXPECT_NE(samples[1].connectionKey, key);
    EXPECT_EQ(samples[1].moved, (ByteCount{7, 8}));
}

TEST_F(ConnectionTableTest, TellsWhoOpenedAConnectionByTheListeningPorts) {
    SocketReport listener = inState(TcpState::Listen, report(1, {}));
    SocketReport wildcard = listener;
    wildcard.socketDomain = AF_INET6;
    wildcard.local = {IpAddress::IPv6, 8080, {}};
    SocketReport ipv6 = report(4, {});
    ipv6.socketDomain = AF_INET6;
    SocketReport onWildcardPort = report(5, {});
    onWildcardPort.local.port = 8080;

    std::vector<SocketReport> dump{listener, wildcard};
    const auto directionOf = [&](const SocketReport& connection) {
        dump.push_back(connection);
        return poll(dump).at(0).direction;
    };
    EXPECT_EQ(directionOf(report(3, {})), Direction::Input);
    EXPECT_EQ(directionOf(ipv6), Direction::Output) << "the listener on its port is an IPv4 socket";
    EXPECT_EQ(directionOf(onWildcardPort), Direction::Input);
    dump.erase(dump.begin());
    EXPECT_EQ(directionOf(report(6, {})), Direction::Input) << "the listener may have closed since";
    EXPECT_EQ(directionOf(report(7, {})), Direction::Output);
}

}  // namespace
}  // namespace service
