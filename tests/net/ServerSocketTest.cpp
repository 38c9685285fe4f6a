// SPDX-License-Identifier: GPL-3.0-or-later
#include "net/ServerSocket.h"

#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <thread>

#include "tests/support/Listener.h"

namespace {

using namespace std::chrono_literals;

/** Sends one byte to whoever connects. */
class GreetingServer : public Net::ServerSocket {
  public:
    using ServerSocket::ServerSocket;
    ~GreetingServer() override { breakListen(); }
    void onSocketAccepted(Net::Socket* socket) override {
        socket->write("!", 1);
        delete socket;
    }
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

TEST(ServerSocket, BreakListenWakesAWaitingListen) {
    const Net::IPv4SocketAddress address = Listener().address();
    GreetingServer server(address, Net::Stream);
    server.breakListen();
    std::thread serving([&] { server.listen(); });
    std::this_thread::sleep_for(200ms);
    server.breakListen();
    serving.join();
}

TEST(ServerSocket, IsInvalidOnAnAddressInUse) {
    const Listener taken;
    EXPECT_FALSE(Net::ServerSocket(taken.address(), Net::Stream).isValid());
}

}  // namespace
