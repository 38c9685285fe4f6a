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
#include "protocol/EventMessage.h"
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

    /** Has the server told to stop, and waits until it has. */
    void stop() {
        loop.post([this] { server->drain([this] { loop.stop(); }); });
        m_Thread.join();
        server.reset();
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

TEST_F(ServerTest, HalfAFrameWaitsForItsRestWhileOthersAreServed) {
    start();
    TestClient slow(address);
    TestClient other(address);
    const std::vector<std::uint8_t> frame = requestFrame(5, anything);
    for (const std::uint8_t& byte : frame) {
        EXPECT_TRUE(other.ask(anything));
        ASSERT_TRUE(slow.send({&byte, 1}));
    }
    EXPECT_EQ(slow.read()->header.replyToId, 5);
}

TEST_F(ServerTest, ABodyOfAnImpossibleSizeEndsItsClientOnly) {
    start();
    TestClient good(address);
    for (const std::int32_t size : {-1, 4097, 0x7fffffff}) {
        TestClient bad(address);
        std::vector<std::uint8_t> bytes = requestFrame(7, anything);
        const std::vector<std::uint8_t> impossible = frameHeader(8, 11, size);
        bytes.insert(bytes.end(), impossible.begin(), impossible.end());
        ASSERT_TRUE(bad.send(bytes));
        const auto answer = bad.read();
        ASSERT_TRUE(answer) << size;
        EXPECT_EQ(answer->header.replyToId, 7) << "what came before it is answered";
        EXPECT_FALSE(bad.read()) << size;
        EXPECT_TRUE(good.ask(anything)) << size;
    }
}

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

TEST_F(ServerTest, AClientThatDoesNotReadIsDroppedWhileOthersAreServed) {
    start({.patience = 300ms});
    TestClient deaf(address);
    TestClient other(address);
    constexpr int count = 5000;
    ASSERT_TRUE(deaf.send(requestsForMuch(count)));
    const auto deadline = std::chrono::steady_clock::now() + 10s;
    while (deaf.send(frameHeader(0, 11, 0)) && std::chrono::steady_clock::now() < deadline) {
        ASSERT_TRUE(other.ask(anything));
        std::this_thread::sleep_for(10ms);
    }
    EXPECT_LT(std::chrono::steady_clock::now(), deadline) << "it is still connected";
    EXPECT_TRUE(other.ask(anything));
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

TEST_F(ServerTest, WhoeverAsksForCleaningIsToldOfItLikeTheOthers) {
    tellClients = [this](DaemonEvent event) { server->broadcast(event); };
    start();
    TestClient asking(address);
    ASSERT_TRUE(asking.ask(anything));
    TestClient other(address);
    EventMessage clean;
    clean.eventId = 1;
    ASSERT_TRUE(asking.send(requestFrame(1, clean)));
    for (TestClient* client : {&asking, &other}) {
        const auto event = client->read();
        ASSERT_TRUE(event);
        EXPECT_EQ(event->header.messageType, -1);
        EXPECT_EQ(event->header.replyToId, -1);
        EXPECT_EQ(event->body, (std::vector<std::uint8_t>{0, 0, 0, 2, 0, 0, 0, 0}));
    }
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

TEST_F(ServerTest, ToldToStopItAnswersWhatHasArrivedAndResetsTheConnection) {
    start();
    TestClient client(address);
    constexpr int count = 300;
    for (int i = 0; i < count; ++i) {
        ASSERT_TRUE(client.send(requestFrame(i, anything)));
    }
    stop();
    for (int i = 0; i < count; ++i) {
        const auto reply = client.read();
        ASSERT_TRUE(reply) << i;
        ASSERT_EQ(reply->header.replyToId, i);
    }
    EXPECT_FALSE(client.send(frameHeader(0, 11, 0))) << "a request that nobody will answer";
}

}  // namespace service
