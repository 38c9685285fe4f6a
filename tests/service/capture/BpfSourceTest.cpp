// SPDX-License-Identifier: GPL-3.0-or-later
#include "service/capture/bpf/BpfSource.h"

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <filesystem>
#include <map>
#include <thread>

#include "service/server/FileDescriptor.h"
#include "service/traffic/Clock.h"
#include "tests/support/PrivateNetwork.h"

namespace service {
namespace {

constexpr int payloadBytes = 100'000;

std::string ownPath() {
    return std::filesystem::read_symlink("/proc/self/exe").string();
}

/** A socket on 127.0.0.1, of this process's network namespace. */
FileDescriptor socketAt(int type, std::uint16_t port) {
    FileDescriptor socket(::socket(AF_INET, type | SOCK_CLOEXEC, 0));
    const sockaddr_in address{AF_INET, htons(port), {htonl(INADDR_LOOPBACK)}, {}};
    const int yes = 1;
    ::setsockopt(socket.get(), SOL_SOCKET, SO_REUSEADDR, &yes, sizeof(yes));
    EXPECT_EQ(::bind(socket.get(), reinterpret_cast<const sockaddr*>(&address), sizeof(address)), 0);
    return socket;
}

FileDescriptor connectTo(int type, std::uint16_t port) {
    FileDescriptor socket(::socket(AF_INET, type | SOCK_CLOEXEC, 0));
    const sockaddr_in address{AF_INET, htons(port), {htonl(INADDR_LOOPBACK)}, {}};
    EXPECT_EQ(::connect(socket.get(), reinterpret_cast<const sockaddr*>(&address), sizeof(address)), 0);
    return socket;
}

/** Sends all of `payloadBytes` and waits for the other end to have read them and closed. */
void sendPayload(const FileDescriptor& socket) {
    const std::vector<char> payload(payloadBytes, 'p');
    EXPECT_EQ(::send(socket.get(), payload.data(), payload.size(), 0), payloadBytes);
    ::shutdown(socket.get(), SHUT_WR);
    char last = 0;
    EXPECT_EQ(::recv(socket.get(), &last, 1, 0), 0);
}

void readToEnd(const FileDescriptor& socket) {
    std::array<char, 4096> piece;
    while (::recv(socket.get(), piece.data(), piece.size(), 0) > 0) {
    }
}

void moveBothWays(const FileDescriptor& listener, const FileDescriptor& client) {
    std::thread server(
        [&listener] { readToEnd(FileDescriptor(::accept(listener.get(), nullptr, nullptr))); });
    sendPayload(client);
    server.join();
}

/** In a network namespace of its own: it counts for the whole machine, and is to see nothing else there. */
class BpfSourceTest : public ::testing::Test {
  protected:
    void SetUp() override {
        if (!enterPrivateNetwork()) {
            GTEST_SKIP() << "no network namespace can be made here";
        }
    }

    /** False, with the reason in `m_Error`, where it may not. */
    bool startSource() {
        m_Source = BpfSource::create(m_Error);
        return m_Source != nullptr;
    }

    /**
     * What was found of an application at a port, by direction; each poll stands for a second. Other tests of
     * this program may run beside it; they use other ports.
     */
    std::map<Direction, TrafficSample> pollFor(const std::string& path, std::uint16_t port, int polls = 3) {
        std::map<Direction, TrafficSample> found;
        for (int i = 0; i < polls; ++i) {
            for (const TrafficSample& sample : m_Source->poll(systemClock())) {
                const bool isAtPort = sample.local.port == port || sample.remote.port == port;
                if (sample.application->path == path && isAtPort) {
                    TrafficSample sum = sample;
                    sum.moved += found[sample.direction].moved;
                    sum.payload += found[sample.direction].payload;
                    found[sample.direction] = sum;
                }
            }
        }
        return found;
    }

    std::unique_ptr<BpfSource> m_Source;
    std::string m_Error;
};

TEST_F(BpfSourceTest, CountsEachByteAsSentByOneAndReceivedByTheOther) {
    if (!startSource()) {
        GTEST_SKIP() << m_Error;
    }
    const FileDescriptor listener = socketAt(SOCK_STREAM, 4001);
    ASSERT_EQ(::listen(listener.get(), 1), 0);
    {
        const FileDescriptor client = connectTo(SOCK_STREAM, 4001);
        moveBothWays(listener, client);
    }
    auto found = pollFor(ownPath(), 4001);
    const TrafficSample& client = found[Direction::Output];
    const TrafficSample& server = found[Direction::Input];
    EXPECT_EQ(client.payload, (ByteCount{0, payloadBytes}));
    EXPECT_EQ(server.payload, (ByteCount{payloadBytes, 0}));
    EXPECT_GT(client.moved.sent, payloadBytes + 4 * 40);  // at least SYN, ACK, data and FIN
    EXPECT_EQ(client.moved.sent, server.moved.received);
    EXPECT_EQ(client.moved.received, server.moved.sent);
    EXPECT_TRUE(client.closed && server.closed);
    EXPECT_EQ(client.remote.port, 4001);
    EXPECT_EQ(client.local, server.remote);
}

TEST_F(BpfSourceTest, LeavesToTheKernelWhatTheKernelSays) {
    if (!startSource()) {
        GTEST_SKIP() << m_Error;
    }
    constexpr std::uint16_t none = 0;  // what the kernel says is not kept by peers
    pollFor("", none);
    const FileDescriptor sender(::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0));
    const sockaddr_in nobody{AF_INET, htons(4004), {htonl(INADDR_LOOPBACK)}, {}};
    EXPECT_EQ(::sendto(sender.get(), "123", 3, 0, reinterpret_cast<const sockaddr*>(&nobody), sizeof(nobody)),
              3);
    const auto found = pollFor("", none, 1);
    ASSERT_TRUE(found.contains(Direction::Undefined));
    constexpr int datagram = 20 + 8 + 3;
    constexpr int unreachable =
        20 + 8 + datagram;  // the ICMP message, which comes back to the kernel as well
    EXPECT_GE(found.at(Direction::Undefined).moved.received, datagram + unreachable);
    EXPECT_GE(found.at(Direction::Undefined).moved.sent, unreachable);
}

}  // namespace
}  // namespace service
