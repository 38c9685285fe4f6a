// SPDX-License-Identifier: GPL-3.0-or-later
#include "service/capture/bpf/BpfSource.h"

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <map>

#include "service/system/FileDescriptor.h"
#include "service/traffic/Clock.h"
#include "tests/service/capture/LoopbackPair.h"
#include "tests/support/PrivateNetwork.h"

namespace service {
namespace {

constexpr int payloadBytes = 30'000;

std::string ownPath() {
    return std::filesystem::read_symlink("/proc/self/exe").string();
}

sockaddr_in loopback(std::uint16_t port) {
    return {AF_INET, htons(port), {htonl(INADDR_LOOPBACK)}, {}};
}

FileDescriptor datagramSocketAt(std::uint16_t port) {
    FileDescriptor socket(::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0));
    const sockaddr_in address = loopback(port);
    EXPECT_EQ(::bind(socket.get(), reinterpret_cast<const sockaddr*>(&address), sizeof(address)), 0);
    return socket;
}

void send(const FileDescriptor& socket, std::uint16_t port) {
    const sockaddr_in address = loopback(port);
    EXPECT_EQ(
        ::sendto(socket.get(), "123", 3, 0, reinterpret_cast<const sockaddr*>(&address), sizeof(address)), 3);
}

/** In a network namespace of its own: it counts for the whole machine, and is to see nothing else there. */
class BpfSourceTest : public ::testing::Test {
  protected:
    void SetUp() override {
        if (!enterPrivateNetwork()) {
            GTEST_SKIP() << "no network namespace can be made here";
        }
        if (const std::string error = startSource({}); !m_Source) {
            GTEST_SKIP() << error;
        }
    }

    /** Another one, as on a kernel with these features; why there is none. */
    std::string startSource(const KernelFeatures& features) {
        std::string error;
        m_Source.reset();
        m_Source = BpfSource::create(error, features);
        return error;
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
};

TEST_F(BpfSourceTest, CountsEachByteAsSentByOneAndReceivedByTheOther) {
    LoopbackPair pair(AF_INET);
    const std::uint16_t port = pair.serverPort();
    LoopbackPair::move(pair.client(), pair.server(), payloadBytes);
    pair.closeBoth();
    auto found = pollFor(ownPath(), port);
    const TrafficSample& client = found[Direction::Output];
    const TrafficSample& server = found[Direction::Input];
    EXPECT_EQ(client.payload, (ByteCount{0, payloadBytes}));
    EXPECT_EQ(server.payload, (ByteCount{payloadBytes, 0}));
    EXPECT_GT(client.moved.sent, payloadBytes + 4 * 40);  // at least SYN, ACK, data and FIN
    EXPECT_EQ(client.moved.sent, server.moved.received);
    EXPECT_EQ(client.moved.received, server.moved.sent);
    EXPECT_TRUE(client.closed && server.closed);
    EXPECT_EQ(client.remote.port, port);
    EXPECT_EQ(client.local, server.remote);
}

TEST_F(BpfSourceTest, WithAnotherRootAProgramIsTheMachinesOnlyIfItsFileIs) {
    const std::string root = ::testing::TempDir() + "bpf_source_root_" + std::to_string(::getpid());
    const std::string script =
        "cd " + root +
        " && mount --bind /usr usr && for l in bin lib lib64; do ln -s usr/$l $l; done && "
        "cp /bin/bash usurper && for program in /usurper /usr/bin/bash; do "
        "chroot . $program -c 'echo -n 12345 >/dev/udp/127.0.0.1/4005' || exit; done";
    std::filesystem::create_directories(root + "/usr");
    ASSERT_EQ(std::system(("unshare --mount sh <<'END'\n" + script + "\nEND\n").c_str()), 0);
    std::map<std::string, std::int64_t> sent;
    for (int i = 0; i < 3; ++i) {
        for (const TrafficSample& sample : m_Source->poll(systemClock())) {
            sent[sample.application->path] += sample.remote.port == 4005 ? sample.payload.sent : 0;
        }
    }
    EXPECT_EQ(sent["(sandbox)/usurper"], 5);
    EXPECT_EQ(sent["/usr/bin/bash"], 5);
    for (const char* const name : {"/usr", "/bin", "/lib", "/lib64", "/usurper", ""}) {
        std::filesystem::remove(root + name);  // one by one: what was mounted there is the system's
    }
}

TEST_F(BpfSourceTest, SaysSoAsLongAsTheTablesCannotBeRead) {
#ifdef __SANITIZE_ADDRESS__
    GTEST_SKIP() << "the sanitizer takes descriptors itself";
#endif
    const auto failure = [this] {
        m_Source->poll(systemClock());
        const std::vector<StatusLine> lines = m_Source->status();
        const auto line = std::ranges::find(lines, "tables not read", &StatusLine::name);
        return line == lines.end() ? "" : line->value;
    };
    EXPECT_EQ(failure(), "");
    rlimit before{};
    ASSERT_EQ(::getrlimit(RLIMIT_NOFILE, &before), 0);
    const rlimit none{.rlim_cur = 0, .rlim_max = before.rlim_max};
    ::setrlimit(RLIMIT_NOFILE, &none);
    const std::string told = failure();
    ::setrlimit(RLIMIT_NOFILE, &before);
    EXPECT_EQ(told, std::strerror(EMFILE));
    EXPECT_EQ(failure(), "");
}

TEST_F(BpfSourceTest, HoldsNothingBackWhenAskedForTheLastTime) {
    const FileDescriptor receiver = datagramSocketAt(4010);  // never read: it may be another program's yet
    send(datagramSocketAt(4011), 4010);
    std::int64_t payload = 0;
    for (const TrafficSample& sample : m_Source->pollLast(systemClock())) {
        payload += sample.local.port == 4010 ? sample.payload.received : 0;
    }
    EXPECT_EQ(payload, 3);
}

TEST_F(BpfSourceTest, EndsByQuietWhatComesAfterAnEnd) {
    const FileDescriptor sender = datagramSocketAt(4013);
    {
        const FileDescriptor receiver = datagramSocketAt(4012);
        send(sender, 4012);
        char piece[4];
        EXPECT_EQ(::recv(receiver.get(), piece, sizeof(piece), 0), 3);
    }
    pollFor(ownPath(), 4012);
    constexpr int late = 20, toldOneByOne = 16, datagram = 20 + 8 + 3;
    for (int i = 0; i < late; ++i) {
        send(sender, 4012);
    }
    std::map<std::uint16_t, TrafficSample> last;  // by port; 0 for what is counted without one
    std::map<std::uint16_t, std::int64_t> received;
    for (int i = 0; i < 62; ++i) {
        for (const TrafficSample& sample : m_Source->poll(systemClock())) {
            if (sample.application->path == ownPath() && sample.direction == Direction::Input) {
                last[sample.local.port] = sample;
                received[sample.local.port] += sample.moved.received;
            }
        }
    }
    EXPECT_EQ(received[4012], toldOneByOne * datagram);
    EXPECT_EQ(received[0], (late - toldOneByOne) * datagram);
    EXPECT_TRUE(last[4012].closed && last[0].closed);
}

TEST_F(BpfSourceTest, LeavesToTheKernelWhatTheKernelSays) {
    constexpr std::uint16_t none = 0;  // what the kernel says is not kept by peers
    pollFor("", none);
    send(datagramSocketAt(4014), 4004);
    const auto found = pollFor("", none, 1);
    ASSERT_TRUE(found.contains(Direction::Undefined));
    constexpr int datagram = 20 + 8 + 3;
    constexpr int unreachable =
        20 + 8 + datagram;  // the ICMP message, which comes back to the kernel as well
    EXPECT_GE(found.at(Direction::Undefined).moved.received, datagram + unreachable);
    EXPECT_GE(found.at(Direction::Undefined).moved.sent, unreachable);
}

/** Has a program at `path` read 5,000 bytes of a connection that this one accepted, answer with one, and wait. */
void serveBy(const std::string& path, LoopbackPair& pair) {
    std::filesystem::copy_file("/bin/bash", path, std::filesystem::copy_options::overwrite_existing);
    if (::fork() == 0) {
        ::dup2(pair.server(), STDIN_FILENO);
        ::execl(path.c_str(), path.c_str(), "-c", "read -r -N 5000; echo -n k >&0; read -r", nullptr);
        ::_exit(127);
    }
    char answer;
    const std::string payload(5000, 'p');
    ASSERT_EQ(::send(pair.client(), payload.data(), payload.size(), 0), 5000);
    ASSERT_EQ(::recv(pair.client(), &answer, 1, 0), 1);
}

TEST_F(BpfSourceTest, CountsForWhoAcceptedWhereTheKernelDoesNotTellWhoReads) {
    const std::string other = ::testing::TempDir() + "bpf_source_other_" + std::to_string(::getpid());
    for (const bool tellsTransfers : {true, false}) {
        startSource({.tellsTransfers = tellsTransfers});
        LoopbackPair pair(AF_INET);
        serveBy(other, pair);
        auto found = pollFor(tellsTransfers ? other : ownPath(), pair.serverPort(), 5);
        EXPECT_EQ(found[Direction::Input].payload, (ByteCount{5000, 1}));
        pair.closeClient();
        ::wait(nullptr);
    }
    std::filesystem::remove(other);
}

TEST_F(BpfSourceTest, CountsWhatComesInTimeWaitWhereTheKernelDoesNotTellForWhom) {
    startSource({.tellsReceiver = false});
    LoopbackPair pair(AF_INET);
    LoopbackPair::move(pair.client(), pair.server(), payloadBytes);
    pair.closeBoth();
    auto found = pollFor(ownPath(), pair.serverPort());
    EXPECT_EQ(found[Direction::Output].moved.received, found[Direction::Input].moved.sent);
    EXPECT_EQ(found[Direction::Output].moved.sent, found[Direction::Input].moved.received);
}

}  // namespace
}  // namespace service
