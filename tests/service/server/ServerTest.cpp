// SPDX-License-Identifier: GPL-3.0-or-later
#include "service/server/Server.h"

#include <sys/resource.h>

#include <ctime>
#include <latch>
#include <thread>

#include "protocol/DaemonApplicationInfoFromIdRequest.h"
#include "protocol/DaemonCreateConnectionsIteratorRequest.h"
#include "protocol/DaemonGetCountConnectionsRequest.h"
#include "protocol/DaemonTotalStatisticInfoRequest.h"
#include "tests/service/server/SessionFixture.h"
#include "tests/service/server/TestClient.h"

namespace service {

using namespace std::chrono_literals;

/** A server on a free port, its loop on a thread of its own. */
class ServerTest : public SessionFixture {
  protected:
    ~ServerTest() override {
        if (m_Thread.joinable()) {
            loop.post([this] { loop.stop(); });
            m_Thread.join();
        }
    }

    void start(ServerLimits limits = {}) {
        std::string error;
        std::optional<Listener> listener = Listener::open({.port = 0}, error);
        ASSERT_TRUE(listener) << error;
        address = listener->address();
        server.emplace(loop, std::move(*listener), context(), limits);
        m_Thread = std::thread([this] { loop.run(); });
    }

    /** Small requests with answers of four kilobytes. */
    std::vector<std::uint8_t> requestsForMuch(int count) {
        move(sampleOf(1, "/" + std::string(4000, 'x'), {1, 1}));
        DaemonApplicationInfoFromIdRequest request;
        request.applicationId = 1;
        std::vector<std::uint8_t> bytes;
        for (int i = 0; i < count; ++i) {
            const std::vector<std::uint8_t> frame = requestFrame(i, request);
            bytes.insert(bytes.end(), frame.begin(), frame.end());
        }
        return bytes;
    }

    EventLoop loop;
    ListenAddress address;
    std::optional<Server> server;
    const DaemonTotalStatisticInfoRequest anything{};

  private:
    std::thread m_Thread;
};

TEST_F(ServerTest, AClientThatReadsLateGetsEveryAnswerInOrder) {
    start();
    TestClient client(address);
    constexpr int count = 5000;
    ASSERT_TRUE(client.send(requestsForMuch(count)));
    client.finishSending();
    for (int i = 0; i < count; ++i) {
        const auto reply = client.read();
        ASSERT_TRUE(reply) << i;
        ASSERT_EQ(reply->header.replyToId, i);
    }
    EXPECT_FALSE(client.read());
}

TEST_F(ServerTest, MoreClientsThanItServesAreTurnedAway) {
    start({.clients = 1});
    auto first = std::make_unique<TestClient>(address);
    EXPECT_TRUE(first->ask(anything));
    EXPECT_FALSE(TestClient(address).read());
    EXPECT_TRUE(first->ask(anything));
    first.reset();
    const auto deadline = std::chrono::steady_clock::now() + 10s;
    bool served = false;
    while (!served &&
           std::chrono::steady_clock::now() < deadline) {  // until it has noticed that the first has gone
        served = TestClient(address).ask(anything).has_value();
    }
    EXPECT_TRUE(served);
}

TEST_F(ServerTest, WithoutDescriptorsItWaitsAndDoesNotSpin) {
#ifdef __SANITIZE_ADDRESS__
    GTEST_SKIP() << "the sanitizer's own checks of objects need a descriptor";
#endif
    start({.patience = 500ms});  // which is also how often it tries anew
    TestClient early(address);
    ASSERT_TRUE(early.ask(anything));
    rlimit before{};
    ASSERT_EQ(::getrlimit(RLIMIT_NOFILE, &before), 0);
    const FileDescriptor firstFree(::dup(0));
    const rlimit oneMore{.rlim_cur = static_cast<rlim_t>(firstFree.get()) + 2, .rlim_max = before.rlim_max};
    ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &oneMore), 0);
    TestClient late(address);
    ASSERT_TRUE(late.send(requestFrame(9, anything)));
    const std::clock_t begin = std::clock();
    std::this_thread::sleep_for(400ms);
    EXPECT_LT(std::clock() - begin, CLOCKS_PER_SEC / 5)
        << "processor time of 400 ms in which nothing can be done";
    EXPECT_TRUE(early.ask(anything));
    ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &before), 0);
    EXPECT_EQ(late.read()->header.replyToId, 9);
}

TEST_F(ServerTest, WhoWaitsForAListHoldsNobodyUpAndGetsItsAnswersInOrder) {
    std::latch busy{1};
    ConnectionQuery query;
    orders.take(query, [&busy] { busy.wait(); });  // until then other lists have to wait
    start();
    TestClient waiting(address);
    TestClient other(address);
    ASSERT_TRUE(waiting.ask(DaemonCreateConnectionsIteratorRequest()));
    DaemonGetCountConnectionsRequest count;
    count.iteratorId = 1;
    ASSERT_TRUE(waiting.send(requestFrame(5, count)));
    ASSERT_TRUE(waiting.send(requestFrame(6, anything)));
    {
        TestClient leaving(address);
        ASSERT_TRUE(leaving.ask(DaemonCreateConnectionsIteratorRequest()));
        ASSERT_TRUE(leaving.send(requestFrame(5, count)));
    }
    for (int i = 0; i < 10; ++i) {
        EXPECT_TRUE(other.ask(anything));
    }
    busy.count_down();
    EXPECT_EQ(waiting.read()->header.replyToId, 5);
    EXPECT_EQ(waiting.read()->header.replyToId, 6);
}

}  // namespace service
