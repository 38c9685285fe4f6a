// SPDX-License-Identifier: GPL-3.0-or-later
#include "service/demo/DemoSource.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "service/demo/DemoProfiles.h"

namespace service {
namespace {

using namespace std::chrono_literals;
using std::chrono::seconds;

/** Four in the morning, a Thursday: nobody's habit, but a demo is never asleep. */
constexpr DemoScene night{.present = Moment(seconds(1'700'107'200))};

std::vector<std::string> newPaths(const std::vector<TrafficSample>& samples, std::set<std::string>& seen) {
    std::vector<std::string> fresh;
    for (const TrafficSample& sample : samples) {
        if (seen.insert(sample.application->path).second) {
            fresh.push_back(sample.application->path);
        }
    }
    return fresh;
}

ByteCount sumOf(const std::vector<TrafficSample>& samples) {
    ByteCount sum;
    for (const TrafficSample& sample : samples) {
        sum += sample.moved;
    }
    return sum;
}

TEST(DemoSource, ConnectionsOpenMoveBytesAndCloseOnce) {
    DemoSource source(night, {});
    std::set<std::uint64_t> open;
    std::set<std::uint64_t> closed;
    Moment previous = night.present - 1s;
    for (Moment now = night.present; now < night.present + 1h; now += 1s) {
        for (const TrafficSample& sample : source.poll(now)) {
            ASSERT_NE(sample.application, nullptr);
            ASSERT_GE(sample.moved.received, 0);
            ASSERT_GE(sample.moved.sent, 0);
            ASSERT_FALSE(closed.contains(sample.connectionKey)) << sample.application->name;
            if (open.insert(sample.connectionKey).second) {
                EXPECT_GT(sample.opened, previous)
                    << sample.application->name << " opened in a second gone by";
                EXPECT_LE(sample.opened, now);
            }
            if (sample.closed) {
                closed.insert(sample.connectionKey);
            }
        }
        previous = now;
    }
    EXPECT_GT(closed.size(), 200u);
    EXPECT_GT(open.size(), closed.size());
}

TEST(DemoSource, HowOftenItIsPolledChangesNoTotal) {
    const auto bytesOfConnections = [](seconds step) {
        DemoSource source(night, {});
        std::map<std::uint64_t, ByteCount> bytes;
        for (Moment now = night.present; now <= night.present + 2h; now += step) {
            for (const TrafficSample& sample : source.poll(now)) {
                bytes[sample.connectionKey] += sample.moved;
            }
        }
        return bytes;
    };
    EXPECT_EQ(bytesOfConnections(1s), bytesOfConnections(10min));
}

TEST(DemoSource, SomethingMovesEverySecondAndNeverEvenly) {
    DemoSource source(night, {});
    source.poll(night.present);
    std::set<std::int64_t> received;
    for (seconds elapsed = 1s; elapsed <= 10min; elapsed += 1s) {
        const ByteCount moved = sumOf(source.poll(night.present + elapsed));
        EXPECT_GT(moved.received, 0) << "second " << elapsed.count();
        received.insert(moved.received);
    }
    EXPECT_GT(received.size(), 500u);
}

TEST(DemoSource, NewcomersAppearOneByOne) {
    DemoSource source(night, {});
    std::set<std::string> seen;
    std::vector<seconds> arrivals;
    for (seconds elapsed = 0s; elapsed <= 1h; elapsed += 1s) {
        const auto fresh = newPaths(source.poll(night.present + elapsed), seen);
        for (const DemoProfile& newcomer : demoNewcomers()) {
            arrivals.insert(arrivals.end(), std::ranges::count(fresh, newcomer.path), elapsed);
        }
    }
    ASSERT_EQ(arrivals.size(), demoNewcomers().size());
    EXPECT_EQ(arrivals.front(), 20s);
    for (std::size_t i = 1; i < arrivals.size(); ++i) {
        EXPECT_GE(arrivals[i] - arrivals[i - 1], 2min);
        EXPECT_LE(arrivals[i] - arrivals[i - 1], 5min);
    }
}

TEST(DemoSource, ANewcomerOfAnEarlierRunIsAnApplicationLikeAnyOther) {
    ApplicationRecord known;
    known.path = demoNewcomers().front().path;
    DemoSource source(night, {known});
    std::set<std::string> seen;
    for (seconds elapsed = 0s; elapsed < 20s; elapsed += 1s) {
        newPaths(source.poll(night.present + elapsed), seen);
    }
    EXPECT_TRUE(seen.contains(known.path));
    EXPECT_EQ(newPaths(source.poll(night.present + 20s), seen).front(), demoNewcomers()[1].path);
}

TEST(DemoSource, AClockSetBackMovesNothingUntilItHasCaughtUp) {
    DemoSource source(night, {});
    source.poll(night.present + 60s);
    EXPECT_EQ(sumOf(source.poll(night.present)), ByteCount{});
    EXPECT_EQ(sumOf(source.poll(night.present + 60s)), ByteCount{});
    EXPECT_GT(sumOf(source.poll(night.present + 61s)).received, 0);
}

}  // namespace
}  // namespace service
