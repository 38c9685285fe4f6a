// SPDX-License-Identifier: GPL-3.0-or-later
// Datagrams: each says in its first bytes how long a reply it wants; 0 is none.

#include <fcntl.h>
#include <netinet/udp.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <thread>

#include "tests/capture/generator/Generator.h"
#include "tests/capture/generator/Ring.h"

namespace traffic {

namespace {

constexpr std::size_t largestDatagram = 65507;
constexpr int bufferBytes = 16 * 1024 * 1024;
constexpr std::uint64_t window = 32;  // datagrams under way, so that none is dropped

std::array<char, 65536> received;

/** Has options of no meaning put into every IP header, or behind it. */
void pad(int socket, int family) {
    constexpr std::array<unsigned char, 4> none{1, 1, 1, 0};
    constexpr std::array<unsigned char, 8> padding{0, 0, 1, 4, 0, 0, 0, 0};
    if (family == AF_INET) {
        check(::setsockopt(socket, IPPROTO_IP, IP_OPTIONS, none.data(), none.size()), "IP_OPTIONS");
    } else {
        for (const int header : {IPV6_DSTOPTS, IPV6_HOPOPTS}) {
            check(::setsockopt(socket, IPPROTO_IPV6, header, padding.data(), padding.size()), "IPv6 options");
        }
    }
}

/** "protocol": another one than UDP, which over IPv6 looks alike to a program, with port 0. */
int makeSocket(const Arguments& arguments, int family) {
    const int protocol = static_cast<int>(arguments.number("protocol"));
    const int socket = check(::socket(family, protocol == 0 ? SOCK_DGRAM : SOCK_RAW, protocol), "socket");
    setOption(socket, SOL_SOCKET, SO_RCVBUFFORCE, bufferBytes, "SO_RCVBUFFORCE");
    setOption(socket, SOL_SOCKET, SO_SNDBUFFORCE, bufferBytes, "SO_SNDBUFFORCE");
    if (arguments.number("options")) {
        pad(socket, family);
    }
    return socket;
}

/** Sends and receives in the way that "method" names: "plain", "mmsg", or those of a `Ring`. */
class Datagrams {
  public:
    Datagrams(const Arguments& arguments, const Endpoint& server, int socket)
        : m_Method(arguments.text("method")), m_Server(server), m_Socket(socket) {
        m_IsConnected = arguments.number("connected", 1) != 0;
        m_Data.resize(std::max<std::size_t>(arguments.number("size", 100), sizeof(std::uint32_t)));
        const auto reply = static_cast<std::uint32_t>(arguments.number("reply", 100));
        std::memcpy(m_Data.data(), &reply, sizeof reply);
        if (m_IsConnected) {
            check(::connect(socket, server.get(), server.size), "connect");
        }
    }

    std::uint64_t send(std::uint64_t count) {
        if (m_Method == "mmsg") {
            return sendMany(count);
        }
        for (std::uint64_t i = 0; i < count; ++i) {
            check(sendOne(), "send a datagram");
        }
        return count * m_Data.size();
    }

    std::uint64_t receive(std::uint64_t count) {
        std::uint64_t bytes = 0;
        while (count > 0) {
            const auto [datagrams, size] = m_Method == "mmsg" ? receiveMany(count) : receiveOne();
            count -= datagrams;
            bytes += size;
        }
        return bytes;
    }

  private:
    using CountAndBytes = std::pair<std::uint64_t, std::uint64_t>;

    ssize_t sendOne() {
        if (m_Method.starts_with("uring")) {
            Ring ring(m_Method);
            return ring.send(m_Socket, m_Data.data(), m_Data.size());
        }
        return ::sendto(m_Socket, m_Data.data(), m_Data.size(), 0, m_IsConnected ? nullptr : m_Server.get(),
                        m_IsConnected ? 0 : m_Server.size);
    }

    std::uint64_t sendMany(std::uint64_t count) {
        std::array<mmsghdr, window> messages{};
        iovec part{m_Data.data(), m_Data.size()};
        for (mmsghdr& message : messages) {
            message.msg_hdr.msg_iov = &part;
            message.msg_hdr.msg_iovlen = 1;
        }
        for (std::uint64_t rest = count; rest > 0;) {
            rest -= static_cast<std::uint64_t>(
                check(::sendmmsg(m_Socket, messages.data(), static_cast<unsigned>(rest), 0), "sendmmsg"));
        }
        return count * m_Data.size();
    }

    CountAndBytes receiveOne() {
        if (m_Method.starts_with("uring")) {
            Ring ring(m_Method);
            return {1, check(ring.receive(m_Socket, received.data(), received.size()), "io_uring receives")};
        }
        return {1, check(::recv(m_Socket, received.data(), received.size(), 0), "receive a datagram")};
    }

    CountAndBytes receiveMany(std::uint64_t count) {
        std::array<mmsghdr, window> messages{};
        iovec part{received.data(), received.size()};  // all into one place: only their sizes matter
        for (mmsghdr& message : messages) {
            message.msg_hdr.msg_iov = &part;
            message.msg_hdr.msg_iovlen = 1;
        }
        const int datagrams = check(
            ::recvmmsg(m_Socket, messages.data(), static_cast<unsigned>(count), MSG_WAITFORONE, nullptr),
            "recvmmsg");
        std::uint64_t bytes = 0;
        for (int i = 0; i < datagrams; ++i) {
            bytes += messages[static_cast<std::size_t>(i)].msg_len;
        }
        return {datagrams, bytes};
    }

    const std::string m_Method;
    const Endpoint m_Server;
    const int m_Socket;
    bool m_IsConnected;
    std::vector<char> m_Data;
};

/** "pause": ms behind the first datagram. */
Tally exchange(const Arguments& arguments, Datagrams& datagrams) {
    const bool wantsReplies = arguments.number("reply", 100) > 0;
    Tally tally;
    std::uint64_t rest = arguments.number("count", 1);
    if (const std::uint64_t pause = arguments.number("pause")) {
        tally.sent += datagrams.send(1);
        --rest;
        std::this_thread::sleep_for(std::chrono::milliseconds(pause));
    }
    while (rest > 0) {
        const std::uint64_t now = std::min(rest, window);
        tally.sent += datagrams.send(now);
        tally.received += wantsReplies ? datagrams.receive(now) : 0;
        rest -= now;
    }
    return tally;
}

/** Super-packets that the kernel cuts into datagrams of "size" bytes; without replies. */
Tally sendSegmented(const Arguments& arguments, int socket, const Endpoint& server) {
    const std::uint64_t size = arguments.number("size", 1000);
    const std::uint64_t together = largestDatagram / size;
    setOption(socket, SOL_UDP, UDP_SEGMENT, static_cast<int>(size), "UDP_SEGMENT");
    check(::connect(socket, server.get(), server.size), "connect");
    const std::vector<char> data(together * size);
    Tally tally;
    for (std::uint64_t rest = arguments.number("count", 1); rest > 0;) {
        const std::uint64_t now = std::min(rest, together);
        tally.sent +=
            static_cast<std::uint64_t>(check(::send(socket, data.data(), now * size, 0), "send segments"));
        rest -= now;
    }
    return tally;
}

/** A datagram of "size" bytes to each of "count" addresses from "address" on. */
Tally spray(const Arguments& arguments, int socket, Endpoint first) {
    const std::vector<char> data(arguments.number("size", 100));
    auto* const peer = reinterpret_cast<sockaddr_in*>(first.get());
    const std::uint32_t address = ntohl(peer->sin_addr.s_addr);
    Tally tally;
    for (std::uint32_t i = 0; i < arguments.number("count"); ++i) {
        peer->sin_addr.s_addr = htonl(address + i);
        tally.sent += static_cast<std::uint64_t>(
            check(::sendto(socket, data.data(), data.size(), 0, first.get(), first.size), "spray"));
    }
    return tally;
}

void join(int socket, const std::string& group) {
    if (!group.empty()) {
        group_req request{};
        request.gr_interface = 0;
        const Endpoint endpoint = Endpoint::of(group, 0);
        std::memcpy(&request.gr_group, endpoint.get(), endpoint.size);
        const int level = endpoint.family() == AF_INET ? IPPROTO_IP : IPPROTO_IPV6;
        check(::setsockopt(socket, level, MCAST_JOIN_GROUP, &request, sizeof request), "join a group");
    }
}

/** Answers `count` of the datagrams that are there; with `flags` MSG_DONTWAIT until there are none. */
void answer(int socket, int flags, Tally& tally, std::uint64_t count) {
    static const std::array<char, largestDatagram> reply{};
    for (; count > 0; --count) {
        Endpoint client;
        const ssize_t size =
            ::recvfrom(socket, received.data(), received.size(), flags, client.get(), &client.size);
        if (size <= 0) {
            return;  // none, or shut down
        }
        std::uint32_t wanted = 0;
        std::memcpy(&wanted, received.data(),
                    std::min<std::size_t>(sizeof wanted, static_cast<std::size_t>(size)));
        tally.received += static_cast<std::uint64_t>(size);
        if (wanted > 0) {
            tally.sent += static_cast<std::uint64_t>(
                check(::sendto(socket, reply.data(), wanted, 0, client.get(), client.size), "reply"));
        }
    }
}

}  // namespace

/**
 * Until its input ends. "group": joins it; "gro": takes super-packets; "shared": others may have the port too;
 * "until": closes after so many.
 */
void udpServer(const Arguments& arguments) {
    const Endpoint here = Endpoint::of(arguments);
    const int socket = makeSocket(arguments, here.family());
    if (here.family() == AF_INET6 && !arguments.number("protocol")) {
        setOption(socket, IPPROTO_IPV6, IPV6_V6ONLY, 0, "IPV6_V6ONLY");
    }
    if (arguments.number("shared")) {
        setOption(socket, SOL_SOCKET, SO_REUSEPORT, 1, "SO_REUSEPORT");
    }
    check(::bind(socket, here.get(), here.size), "bind");
    join(socket, arguments.text("group"));
    if (arguments.number("gro")) {
        setOption(socket, SOL_UDP, UDP_GRO, 1, "UDP_GRO");
    }
    Tally tally;
    if (const std::uint64_t until = arguments.number("until")) {
        announceReady();
        answer(socket, 0, tally, until);
        ::close(socket);
        waitForInput();
        report(tally);
        return;
    }
    std::thread ending([socket] {
        announceReady();
        waitForInput();
        ::shutdown(socket, SHUT_RD);  // wakes the other thread, though it says that it is not connected
    });
    answer(socket, 0, tally, UINT64_MAX);
    ending.join();
    answer(socket, MSG_DONTWAIT, tally, UINT64_MAX);
    report(tally);
}

/**
 * "count" datagrams on each of "flows" sockets, which stay open. "wait": says ready when the first socket is made
 * and waits for input. "next": the address of another server, to which each turns afterwards.
 */
void udpClient(const Arguments& arguments) {
    if (arguments.number("unlink")) {
        check(::unlink(programPath().c_str()), "unlink");
    }
    const Endpoint server = Endpoint::of(arguments);
    Tally tally;
    for (std::uint64_t i = 0; i < arguments.number("flows", 1); ++i) {
        const int socket = makeSocket(arguments, server.family());
        if (arguments.text("method") == "gso") {
            tally += sendSegmented(arguments, socket, server);
            continue;
        }
        if (arguments.text("method") == "spray") {
            tally += spray(arguments, socket, server);
            continue;
        }
        Datagrams datagrams(arguments, server, socket);
        if (arguments.number("wait") && i == 0) {
            announceReady();
            waitForInput();
        }
        tally += exchange(arguments, datagrams);
        if (const std::string next = arguments.text("next"); !next.empty()) {
            const Endpoint peer = Endpoint::of(next, arguments.number("port"));
            check(::connect(socket, peer.get(), peer.size), "connect to another");
            tally += exchange(arguments, datagrams);
        }
    }
    report(tally);
}

}  // namespace traffic
