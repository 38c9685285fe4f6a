// SPDX-License-Identifier: GPL-3.0-or-later
#include "service/capture/DiagSource.h"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <functional>
#include <map>
#include <thread>

#include "tests/service/capture/LoopbackPair.h"

namespace service {
namespace {

std::string thisProgram() {
    return std::filesystem::read_symlink("/proc/self/exe");
}

/** What a source said of one end of a connection so far, all polls together. */
struct Seen {
    TrafficSample latest;
    ByteCount moved;
    ByteCount payload;
    bool closed = false;
};

/** Polls a real source on this machine, where other programs have connections too. */
class DiagSourceTest : public ::testing::Test {
  protected:
    void SetUp() override {
        std::string error;
        m_Source = DiagSource::create(error);
        if (!m_Source) {
            GTEST_SKIP() << "no socket diagnostics here: " << error;
        }
        poll();
    }

    void poll() {
        for (const TrafficSample& sample : m_Source->poll(Moment(m_Now += std::chrono::seconds(1)))) {
            Seen& seen = m_Seen[{sample.local.port, sample.remote.port}];
            seen.latest = sample;
            seen.moved += sample.moved;
            seen.payload += sample.payload;
            seen.closed = sample.closed;
        }
    }

    /** Notices of destroyed sockets come from another thread of the kernel, a little later. */
    void pollUntil(const std::function<bool()>& reached) {
        const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(30);
        for (poll(); !reached() && std::chrono::steady_clock::now() < deadline; poll()) {
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        }
        ASSERT_TRUE(reached());
    }

    Seen& client(const LoopbackPair& pair) { return m_Seen[{pair.clientPort(), pair.serverPort()}]; }
    Seen& server(const LoopbackPair& pair) { return m_Seen[{pair.serverPort(), pair.clientPort()}]; }

    std::unique_ptr<DiagSource> m_Source;
    std::chrono::seconds m_Now{1'700'000'000};
    std::map<std::pair<std::uint16_t, std::uint16_t>, Seen> m_Seen;  ///< by local and remote port
};

class DiagSourceOverBothIps : public DiagSourceTest, public ::testing::WithParamInterface<int> {};
INSTANTIATE_TEST_SUITE_P(Domains, DiagSourceOverBothIps, ::testing::Values(AF_INET, AF_INET6));

TEST_P(DiagSourceOverBothIps, CountsExactlyThePayloadUnderThisProgram) {
    const LoopbackPair pair(GetParam());
    LoopbackPair::move(pair.client(), pair.server(), 30'000);
    LoopbackPair::move(pair.server(), pair.client(), 17);
    poll();
    LoopbackPair::move(pair.client(), pair.server(), 1'000);
    poll();
    EXPECT_EQ(client(pair).payload, (ByteCount{.received = 17, .sent = 31'000}));
    EXPECT_EQ(server(pair).payload, (ByteCount{.received = 31'000, .sent = 17}));
    EXPECT_GE(client(pair).moved.sent, 31'000 + 3 * 40) << "it has greeted and sent twice";
    EXPECT_NEAR(static_cast<double>(client(pair).moved.sent),
                static_cast<double>(server(pair).moved.received), 160)
        << "both ends see the same packets, but for the handshake's and one under way";
    EXPECT_NEAR(static_cast<double>(server(pair).moved.sent),
                static_cast<double>(client(pair).moved.received), 160);

    const TrafficSample& opened = client(pair).latest;
    const TrafficSample& accepted = server(pair).latest;
    ASSERT_NE(opened.application, nullptr);
    EXPECT_EQ(opened.application->path, thisProgram());
    EXPECT_EQ(opened.application, accepted.application);
    EXPECT_EQ(opened.direction, Direction::Output);
    EXPECT_EQ(accepted.direction, Direction::Input);
    EXPECT_EQ(opened.socketDomain, GetParam());
    EXPECT_EQ(accepted.socketDomain, AF_INET6);
    EXPECT_EQ(accepted.remote.family, GetParam() == AF_INET ? IpAddress::IPv4 : IpAddress::IPv6);
    EXPECT_EQ(accepted.opened, Moment(m_Now - std::chrono::seconds(1)));
}

TEST_F(DiagSourceTest, CountsToTheEndWhatEndsBetweenPollsAndNamesWhatItHasMet) {
    for (const bool met : {true, false}) {
        LoopbackPair pair(AF_INET);
        if (met) {
            poll();
        }
        Seen& client = this->client(pair);
        Seen& server = this->server(pair);
        LoopbackPair::move(pair.client(), pair.server(), 5'000);
        LoopbackPair::move(pair.server(), pair.client(), 700);
        pair.closeBoth();
        pollUntil([&] { return client.closed && server.closed; });
        EXPECT_EQ(server.payload, (ByteCount{.received = 5'000, .sent = 700}));
        EXPECT_EQ(client.payload.sent, 5'000);
        const std::string owner = met ? thisProgram() : unknownApplicationPath;
        EXPECT_EQ(client.latest.application->path, owner);
        EXPECT_EQ(server.latest.application->path, owner);
    }
}

TEST_F(DiagSourceTest, FindsTheChildThatServesWhatItsParentAccepted) {
    LoopbackPair pair(AF_INET6);
    const pid_t child = ::fork();
    if (child == 0) {  // answers whatever comes until the client closes
        pair.closeClient();
        char block[512];
        ssize_t length = 0;
        while ((length = ::recv(pair.server(), block, sizeof block, 0)) > 0) {
            ::send(pair.server(), block, static_cast<std::size_t>(length), MSG_NOSIGNAL);
        }
        ::_exit(0);
    }
    pair.closeServer();
    LoopbackPair::move(pair.client(), pair.client(), 400);
    poll();
    EXPECT_EQ(server(pair).payload, (ByteCount{.received = 400, .sent = 400}));
    EXPECT_EQ(client(pair).payload, (ByteCount{.received = 400, .sent = 400}));
    ASSERT_NE(server(pair).latest.application, nullptr);
    EXPECT_EQ(server(pair).latest.application->path, thisProgram());
    ::shutdown(pair.client(), SHUT_WR);
    ::waitpid(child, nullptr, 0);
}

TEST(DiagSource, SaysWhyItCannotBeMade) {
    rlimit before{};
    ASSERT_EQ(::getrlimit(RLIMIT_NOFILE, &before), 0);
    const rlimit none{.rlim_cur = 0, .rlim_max = before.rlim_max};
    ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &none), 0);
    std::string error;
    const auto source = DiagSource::create(error);
    ::setrlimit(RLIMIT_NOFILE, &before);
    EXPECT_EQ(source, nullptr);
    EXPECT_NE(error.find("Too many open files"), std::string::npos) << error;
}

}  // namespace
}  // namespace service
