// SPDX-License-Identifier: GPL-3.0-or-later
// Loads that show what the capture costs: capture_load MODE ADDRESS PORT [NUMBER]...
//
//   receive A P             takes in streams and datagrams until its input ends
//   stream A P S            sends as fast as it can for S seconds; tells bytes a second, for each slot of time
//   datagrams A P S SIZE    likewise, so many at a time that none is dropped; tells datagrams a second
//   echo A P                sends back what connections bring, until its input ends
//   live A P N ACTIVE S     opens N connections; each second for S seconds ACTIVE of them carry 1,000 bytes there and back
//   short A P RATE S        RATE connections a second, each with 100 bytes there and back; counts up A's last number
//                           from one to the next, because each address has only so many ports

#include <arpa/inet.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/epoll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <thread>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;
using Seconds = std::chrono::duration<double>;

constexpr int datagramsPerAcknowledgement = 32;
constexpr int window = 4;  // acknowledgements that may be outstanding

int check(long result, const char* what) {
    if (result < 0) {
        std::perror(what);
        std::exit(1);
    }
    return static_cast<int>(result);
}

sockaddr_in endpoint(const char* address, const char* port) {
    sockaddr_in result{};
    result.sin_family = AF_INET;
    result.sin_port = htons(static_cast<std::uint16_t>(std::atoi(port)));
    check(::inet_pton(AF_INET, address, &result.sin_addr) - 1, "address");
    return result;
}

int bound(int type, const sockaddr_in& here) {
    const int socket = check(::socket(AF_INET, type, 0), "socket");
    const int on = 1;
    const int bytes = 4 << 20;
    ::setsockopt(socket, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
    ::setsockopt(socket, SOL_SOCKET, SO_RCVBUFFORCE, &bytes, sizeof bytes);
    check(::bind(socket, reinterpret_cast<const sockaddr*>(&here), sizeof here), "bind");
    return socket;
}

int connected(int type, const sockaddr_in& there) {
    const int socket = check(::socket(AF_INET, type, 0), "socket");
    check(::connect(socket, reinterpret_cast<const sockaddr*>(&there), sizeof there), "connect");
    return socket;
}

[[noreturn]] void untilInputEnds() {
    std::puts("ready");
    std::fflush(stdout);
    char c;
    while (::read(STDIN_FILENO, &c, 1) > 0) {
    }
    std::_Exit(0);
}

[[noreturn]] void receive(const sockaddr_in& here) {
    const int listener = bound(SOCK_STREAM, here);
    check(::listen(listener, 16), "listen");
    std::thread([listener] {
        std::vector<char> buffer(256 << 10);
        while (true) {
            const int connection = check(::accept(listener, nullptr, nullptr), "accept");
            while (::read(connection, buffer.data(), buffer.size()) > 0) {
            }
            ::close(connection);
        }
    }).detach();
    std::thread([socket = bound(SOCK_DGRAM, here)] {
        std::array<char, 2048> datagram;
        for (int count = 1;; ++count) {
            sockaddr_in from{};
            socklen_t size = sizeof from;
            check(::recvfrom(socket, datagram.data(), datagram.size(), 0, reinterpret_cast<sockaddr*>(&from),
                             &size),
                  "receive");
            if (count % datagramsPerAcknowledgement == 0) {
                ::sendto(socket, "", 1, 0, reinterpret_cast<sockaddr*>(&from), size);
            }
        }
    }).detach();
    untilInputEnds();
}

/** Tells what was done in each slot of time, as it ends: the moment of its end and how much a second. */
class Meter {
  public:
    explicit Meter(double seconds)
        : m_End(Clock::now() + std::chrono::duration_cast<Clock::duration>(Seconds(seconds))) {}

    void add(double amount) { m_Amount += amount; }

    bool goesOn() {
        const auto now = Clock::now();
        if (const Seconds length = now - m_SlotStart; length >= slot) {
            std::printf("%.3f %.0f\n", Seconds(now.time_since_epoch()).count(), m_Amount / length.count());
            std::fflush(stdout);
            m_SlotStart = now;
            m_Amount = 0;
        }
        return now < m_End;
    }

  private:
    static constexpr Seconds slot{0.05};

    const Clock::time_point m_End;
    Clock::time_point m_SlotStart = Clock::now();
    double m_Amount = 0;
};

void stream(const sockaddr_in& there, double seconds) {
    const int socket = connected(SOCK_STREAM, there);
    const std::vector<char> data(64 << 10);
    Meter meter(seconds);
    while (meter.goesOn()) {
        meter.add(check(::write(socket, data.data(), data.size()), "write"));
    }
}

void datagrams(const sockaddr_in& there, double seconds, std::size_t size) {
    const int socket = connected(SOCK_DGRAM, there);
    const std::vector<char> data(size);
    Meter meter(seconds);
    int outstanding = 0;
    char c;
    while (meter.goesOn()) {
        for (int i = 0; i < datagramsPerAcknowledgement; ++i) {
            check(::send(socket, data.data(), data.size(), 0), "send");
        }
        meter.add(datagramsPerAcknowledgement);
        if (++outstanding >= window) {
            check(::recv(socket, &c, 1, 0), "acknowledgement");
            --outstanding;
        }
    }
}

[[noreturn]] void echo(const sockaddr_in& here) {
    const int listener = bound(SOCK_STREAM, here);
    check(::listen(listener, 4096), "listen");
    std::thread([listener] {
        const int events = check(::epoll_create1(0), "epoll");
        const auto watch = [events](int socket) {
            epoll_event event{.events = EPOLLIN, .data = {.fd = socket}};
            check(::epoll_ctl(events, EPOLL_CTL_ADD, socket, &event), "watch");
        };
        watch(listener);
        std::array<epoll_event, 256> ready;
        std::array<char, 4096> data;
        while (true) {
            const int count = check(::epoll_wait(events, ready.data(), ready.size(), -1), "wait");
            for (int i = 0; i < count; ++i) {
                const int socket = ready[static_cast<std::size_t>(i)].data.fd;
                if (socket == listener) {
                    watch(check(::accept(listener, nullptr, nullptr), "accept"));
                } else if (const ssize_t size = ::read(socket, data.data(), data.size()); size > 0) {
                    check(::write(socket, data.data(), static_cast<std::size_t>(size)), "echo");
                } else {
                    ::close(socket);
                }
            }
        }
    }).detach();
    untilInputEnds();
}

/** `size` bytes there and back. */
void exchange(int socket, std::size_t size) {
    std::array<char, 4096> data{};
    check(::send(socket, data.data(), size, 0), "send");
    if (::recv(socket, data.data(), size, MSG_WAITALL) != static_cast<ssize_t>(size)) {
        std::exit(1);
    }
}

void live(const sockaddr_in& there, std::size_t connections, std::size_t active, int seconds) {
    std::vector<int> sockets;
    while (sockets.size() < connections) {
        sockets.push_back(connected(SOCK_STREAM, there));
    }
    std::puts("ready");
    std::fflush(stdout);
    std::size_t next = 0;
    auto due = Clock::now();
    for (int second = 0; second < seconds; ++second) {
        for (std::size_t i = 0; i < active; ++i) {
            exchange(sockets[next++ % connections], 1000);
        }
        std::this_thread::sleep_until(due += std::chrono::seconds(1));
    }
}

/** One after the other would spend its time on waking the other end, so some are open at once. */
void shortConnections(sockaddr_in there, double rate, double seconds) {
    constexpr std::uint64_t addresses = 200;
    const std::uint32_t first = ntohl(there.sin_addr.s_addr);
    std::uint64_t count = 0;
    std::array<int, 32> sockets;
    std::array<char, 100> data{};
    const auto start = Clock::now();
    for (auto now = start; Seconds(now - start).count() < seconds; now = Clock::now()) {
        if (Seconds(now - start).count() * rate < static_cast<double>(count)) {
            std::this_thread::sleep_for(std::chrono::microseconds(200));
            continue;
        }
        for (int& socket : sockets) {
            there.sin_addr.s_addr = htonl(first + static_cast<std::uint32_t>(count++ % addresses));
            socket = connected(SOCK_STREAM, there);
            check(::send(socket, data.data(), data.size(), 0), "send");
        }
        for (const int socket : sockets) {
            check(::recv(socket, data.data(), data.size(), MSG_WAITALL) - 100, "receive");
            ::close(socket);
        }
    }
    std::printf("%llu %.0f\n", static_cast<unsigned long long>(count),
                static_cast<double>(count) / Seconds(Clock::now() - start).count());
}

}  // namespace

int main(int count, char** words) {
    const std::string mode = count < 4 ? "" : words[1];
    const auto number = [&](int index) { return index < count ? std::atof(words[index]) : 0; };
    if (mode == "receive") {
        receive(endpoint(words[2], words[3]));
    } else if (mode == "echo") {
        echo(endpoint(words[2], words[3]));
    } else if (mode == "stream") {
        stream(endpoint(words[2], words[3]), number(4));
    } else if (mode == "datagrams") {
        datagrams(endpoint(words[2], words[3]), number(4), static_cast<std::size_t>(number(5)));
    } else if (mode == "live") {
        live(endpoint(words[2], words[3]), static_cast<std::size_t>(number(4)),
             static_cast<std::size_t>(number(5)), static_cast<int>(number(6)));
    } else if (mode == "short") {
        shortConnections(endpoint(words[2], words[3]), number(4), number(5));
    } else {
        std::fputs("usage: capture_load MODE ADDRESS PORT [NUMBER]...\n", stderr);
        return 2;
    }
}
