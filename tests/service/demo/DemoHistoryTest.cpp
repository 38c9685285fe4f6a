// SPDX-License-Identifier: GPL-3.0-or-later
#include "service/demo/DemoHistory.h"

#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/socket.h>

#include <algorithm>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "service/store/HistoryReader.h"
#include "tests/support/TemporaryFolder.h"

namespace service {
namespace {

using namespace std::chrono;

/** An odd second of a user whose clock runs half an hour beside that of UTC. */
constexpr DemoScene scene{.present = Moment(seconds(1'763'720'123)), .utcOffset = minutes(330)};

Ledger newLedger(const DemoScene& of) {
    LedgerState state;
    state.totals.start = demoHistoryBegin(of);
    return Ledger(std::move(state));
}

/** What the first month moves, to the byte. */
Counters firstMonth(const DemoScene& of) {
    Ledger ledger = newLedger(of);
    runDemoYear(of, ledger,
                [&](const LedgerChanges& changes) { return changes.moment < of.present - days(330); });
    return ledger.totals().counters;
}

/** The year, lived through once for all tests. */
class DemoYear : public testing::Test {
  protected:
    struct Step {
        Moment moment;
        std::int64_t allBytes;   ///< received and sent since the step before
        std::int64_t workBytes;  ///< likewise, of the editor, which is used at work only
    };
    struct Year {
        std::vector<Step> steps;
        std::map<ConnectionId, ConnectionRecord> connections;
        std::vector<ApplicationRecord> applications;
        TotalsRecord totals;
    };

    static void SetUpTestSuite() {
        Ledger ledger = newLedger(scene);
        std::int64_t all = 0;
        std::int64_t work = 0;
        runDemoYear(scene, ledger, [&](const LedgerChanges& changes) {
            Step step{changes.moment, bytesOf(changes.totals.counters) - all, 0};
            for (const ApplicationRecord& application : changes.applications) {
                if (application.name == "VSCodium") {
                    step.workBytes = bytesOf(application.counters) - work;
                }
            }
            for (const ConnectionRecord& connection : changes.connections) {
                s_Year.connections[connection.id] = connection;
            }
            all += step.allBytes;
            work += step.workBytes;
            s_Year.steps.push_back(step);
            return true;
        });
        s_Year.applications = ledger.applications();
        s_Year.totals = ledger.totals();
    }

    static void TearDownTestSuite() { s_Year = {}; }

    static std::int64_t bytesOf(const Counters& counters) {
        return counters.total().received + counters.total().sent;
    }

    static inline Year s_Year;
};

TEST_F(DemoYear, KeepsHoursThenMinutesThenTensOfSeconds) {
    ASSERT_EQ(s_Year.steps.back().moment, scene.present);
    for (std::size_t i = 1; i < s_Year.steps.size(); ++i) {
        const Moment moment = s_Year.steps[i].moment;
        const seconds grain = moment - s_Year.steps[i - 1].moment;
        const seconds age = scene.present - s_Year.steps[i - 1].moment;
        const seconds allowed = age > hours(24) ? seconds(3600) : age > hours(2) ? seconds(60) : seconds(10);
        ASSERT_GT(grain, seconds(0));
        ASSERT_LE(grain, allowed) << "at the age of " << age.count() << " s";
    }
    EXPECT_NEAR(static_cast<double>(s_Year.steps.size()), 364 * 24 + 22 * 60 + 2 * 360, 70)
        << "a long step may reach into the time of shorter ones";
}

TEST_F(DemoYear, EveryKindOfTrafficOccurs) {
    for (const auto protocolClass : {ProtocolClass::Tcp, ProtocolClass::Udp, ProtocolClass::Other}) {
        EXPECT_GT(s_Year.totals.counters[protocolClass].received, 0);
        EXPECT_GT(s_Year.totals.counters[protocolClass].sent, 0);
    }
    std::set<Direction> directions;
    std::set<std::pair<int, int>> kinds;
    for (const auto& [id, connection] : s_Year.connections) {
        directions.insert(connection.direction);
        kinds.emplace(connection.remote.family, connection.socketProtocol);
        EXPECT_EQ(connection.remote.family == IpAddress::IPv6, connection.socketDomain == AF_INET6);
    }
    EXPECT_EQ(directions, (std::set{Direction::Input, Direction::Output, Direction::Undefined}));
    for (const int family : {IpAddress::IPv4, IpAddress::IPv6}) {
        EXPECT_TRUE(kinds.contains({family, IPPROTO_TCP}) && kinds.contains({family, IPPROTO_UDP}));
    }
    EXPECT_TRUE(kinds.contains({IpAddress::IPv4, IPPROTO_ICMP}));
    EXPECT_TRUE(kinds.contains({IpAddress::IPv6, IPPROTO_ICMPV6}));
}

TEST_F(DemoYear, TensOfThousandsOfConnectionsMoveAFewHundredGigabytesWithinTheYear) {
    const double gigabytes = static_cast<double>(bytesOf(s_Year.totals.counters)) / 1e9;
    EXPECT_GT(gigabytes, 250);
    EXPECT_LT(gigabytes, 900);
    EXPECT_GE(s_Year.connections.size(), 40'000u);
    EXPECT_LE(s_Year.connections.size(), 60'000u);
    std::size_t endsOnTheHour = 0;
    for (const auto& [id, connection] : s_Year.connections) {
        ASSERT_GE(connection.start, demoHistoryBegin(scene));
        ASSERT_LE(connection.start, connection.end);
        ASSERT_LE(connection.end, scene.present);
        endsOnTheHour += connection.end.time_since_epoch() % hours(1) == seconds(0) ? 1 : 0;
    }
    EXPECT_LT(endsOnTheHour, s_Year.connections.size() / 100);
}

TEST_F(DemoYear, NightsAndWeekendsDifferAndApplicationsComeAndGo) {
    const auto count = [](auto isSo) { return std::ranges::count_if(s_Year.applications, isSo); };
    EXPECT_GE(count([](const auto& row) { return row.firstSeen > demoHistoryBegin(scene) + days(60); }), 3);
    EXPECT_GE(count([](const auto& row) { return row.lastSeen < scene.present - days(50); }), 3);
    std::map<bool, double> workByWeekend;
    std::map<bool, double> allByNight;
    for (const Step& step : s_Year.steps) {
        const Moment middle = step.moment - minutes(30) + scene.utcOffset;
        const auto day = floor<days>(middle);
        const bool isWeekend = weekday(day) == Saturday || weekday(day) == Sunday;
        const bool isNight = middle - day < hours(6);
        workByWeekend[isWeekend] += static_cast<double>(step.workBytes) / (isWeekend ? 2 : 5);
        allByNight[isNight] += static_cast<double>(step.allBytes) / (isNight ? 6 : 18);
    }
    EXPECT_LT(workByWeekend[true], workByWeekend[false] / 3);
    EXPECT_LT(allByNight[true], allByNight[false] * 0.8);
}

TEST(DemoHistory, FollowsFromTheSeedAlone) {
    EXPECT_TRUE(firstMonth(scene) == firstMonth(scene));
    DemoScene other = scene;
    other.seed = 2;
    EXPECT_FALSE(firstMonth(scene) == firstMonth(other));
}

TEST(DemoHistory, FillsANewStoreAndLeavesAnOlderOneAlone) {
    const TemporaryFolder folder;
    const std::string path = folder.file("history");
    std::string error;
    const auto store = Store::open(path, error);
    ASSERT_NE(store, nullptr) << error;
    ASSERT_TRUE(writeDemoHistory(*store, scene)) << store->lastError();
    const LedgerState first = store->load(scene.present).value();
    Counters sum;
    for (const ApplicationRecord& application : first.applications) {
        sum += application.counters;
    }
    EXPECT_EQ(first.totals.start, demoHistoryBegin(scene));
    EXPECT_EQ(first.totals.counters, sum);

    const auto reader = HistoryReader::open(path, error);
    ASSERT_NE(reader, nullptr) << error;
    EXPECT_EQ(reader->totalUpTo({}, {}, scene.present), sum.total());
    const ByteCount halfOfIt = reader->totalUpTo({}, {}, scene.present - days(182));
    EXPECT_NEAR(static_cast<double>(halfOfIt.received) / static_cast<double>(sum.total().received), 0.5, 0.1);
    ConnectionQuery everything;
    everything.from = demoHistoryBegin(scene);
    everything.to = scene.present;
    EXPECT_EQ(reader->connections(everything).size(), static_cast<std::size_t>(first.nextConnectionId - 1));

    DemoScene later = scene;
    later.present += days(3);
    ASSERT_TRUE(writeDemoHistory(*store, later));
    EXPECT_EQ(store->load(later.present).value().totals.counters, first.totals.counters);
    EXPECT_EQ(store->load(later.present).value().nextConnectionId, first.nextConnectionId);
}

}  // namespace
}  // namespace service
