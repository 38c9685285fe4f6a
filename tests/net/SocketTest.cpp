// SPDX-License-Identifier: GPL-3.0-or-later
#include "net/Socket.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <netinet/tcp.h>
#include <signal.h>

#include <array>
#include <chrono>
#include <thread>

#include "tests/support/Listener.h"

namespace {

using Clock = std::chrono::steady_clock;
using namespace std::chrono_literals;

TEST(Socket, MovesBytesAndSeesTheEndOfTheStream) {
    const Listener listener;
    Net::Socket socket(listener.address(), Net::Stream);
    ASSERT_TRUE(socket.isValid());
    const int peer = listener.accept();
    const auto start = Clock::now();
    EXPECT_FALSE(socket.isDataAvailable());
    EXPECT_GE(Clock::now() - start, 4ms);
    EXPECT_EQ(socket.write("hello", 5), 5);
    std::array<char, 8> buffer{};
    EXPECT_EQ(::read(peer, buffer.data(), buffer.size()), 5);
    EXPECT_EQ(::write(peer, "ok", 2), 2);
    EXPECT_TRUE(socket.isDataAvailable());
    EXPECT_EQ(socket.read(buffer.data(), buffer.size()), 2);
    ::close(peer);
    EXPECT_TRUE(socket.isDataAvailable());
    EXPECT_EQ(socket.read(buffer.data(), buffer.size()), 0);
}

TEST(Socket, SignalsDoNotShowAsFailures) {
    struct sigaction action {};
    action.sa_handler = [](int) {};
    sigaction(SIGUSR1, &action, nullptr);  // without SA_RESTART: system calls are interrupted
    const Listener listener;
    Net::Socket socket(listener.address(), Net::Stream);
    const int peer = listener.accept();
    long result = -2;
    std::thread reader([&] {
        char byte = 0;
        result = socket.read(&byte, 1);
    });
    for (int i = 0; i < 20; ++i) {
        pthread_kill(reader.native_handle(), SIGUSR1);
        std::this_thread::sleep_for(1ms);
    }
    EXPECT_EQ(::write(peer, "x", 1), 1);
    reader.join();
    EXPECT_EQ(result, 1);
    ::close(peer);
}

TEST(Socket, SendsAFramesPartsWithoutWaitingForAcknowledgements) {
    const Listener listener;
    const Net::Socket connecting(listener.address(), Net::Stream);
    const int peer = listener.accept();
    {
        const Net::Socket adopted(peer, listener.address());
        int isOn = 0;
        socklen_t length = sizeof isOn;
        getsockopt(peer, IPPROTO_TCP, TCP_NODELAY, &isOn, &length);
        EXPECT_NE(isOn, 0);
        EXPECT_NE(fcntl(peer, F_GETFD) & FD_CLOEXEC, 0) << "a program started later must not hold the link";
    }
    EXPECT_EQ(fcntl(peer, F_GETFD), -1) << "it closes what it has adopted";
}

}  // namespace
