// SPDX-License-Identifier: GPL-3.0-or-later
#include "net/ServerSocket.h"

#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <thread>

#include "tests/support/Listener.h"

namespace {

/** Sends one byte to whoever connects. */
class GreetingServer : public Net::ServerSocket {
  public:
    using ServerSocket::ServerSocket;
    ~GreetingServer() override { breakListen(); }
    void onSocketAccepted(Net::Socket* socket) override {
        ++m_Served;
        socket->write("!", 1);
        delete socket;
    }

    std::atomic<int> m_Served = 0;
};

TEST(ServerSocket, ServesOneConnectionACall) {
    const Net::IPv4SocketAddress address = Listener().address();
    GreetingServer server(address, Net::Stream);
    ASSERT_TRUE(server.isValid());
    for (int i = 0; i < 2; ++i) {
        std::thread serving([&] { server.listen(); });
        std::unique_ptr<Net::Socket> client;
        do {
            client = std::make_unique<Net::Socket>(address, Net::Stream);
        } while (!client->isValid());
        char byte = 0;
        EXPECT_EQ(client->read(&byte, 1), 1);
        serving.join();
    }
}

TEST(ServerSocket, BreakListenWakesAWaitingListenAndServesNobody) {
    const Net::IPv4SocketAddress address = Listener().address();
    GreetingServer server(address, Net::Stream);
    server.breakListen();
    std::atomic<bool> hasEnded = false;
    std::thread serving([&] {
        server.listen();
        hasEnded = true;
    });
    while (!hasEnded) {
        server.breakListen();
    }
    serving.join();
    EXPECT_EQ(server.m_Served, 0);

    std::thread servingAgain([&] { server.listen(); });
    char byte = 0;
    while (Net::Socket(address, Net::Stream).read(&byte, 1) != 1) {
    }
    servingAgain.join();
    EXPECT_EQ(server.m_Served, 1) << "a break must not outlive the listen that it ended";
}

TEST(ServerSocket, IsInvalidOnAnAddressInUse) {
    const Listener taken;
    EXPECT_FALSE(Net::ServerSocket(taken.address(), Net::Stream).isValid());
}

}  // namespace
