// SPDX-License-Identifier: GPL-3.0-or-later
// Streams: each connection carries a request that says how long it is and how long a reply it wants.

#include <fcntl.h>
#include <netinet/tcp.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <cstring>
#include <thread>

#include "tests/capture/generator/Generator.h"
#include "tests/capture/generator/Stream.h"

namespace traffic {

namespace {

struct Opening {  // the first bytes of a request
    std::uint64_t request;
    std::uint64_t reply;
};

int makeSocket(const Arguments& arguments, int family) {
    const int protocol = static_cast<int>(arguments.number("protocol", IPPROTO_TCP));
    return check(::socket(family, SOCK_STREAM, protocol), "socket");
}

/** Lets "bystander", another program, have a look at the connection. Goes on when that one finds nothing yet. */
void showToBystander(int connection, const Arguments& arguments) {
    int ends[2];
    check(::pipe(ends), "pipe");
    if (check(::fork(), "fork") == 0) {
        check(::dup2(ends[1], STDOUT_FILENO), "dup2");
        become(arguments.text("bystander"), {"tcp-bystander", "socket=" + std::to_string(connection)});
    }
    char ready;
    check(::read(ends[0], &ready, 1), "wait for the bystander");
    ::close(ends[0]);
    ::close(ends[1]);
}

/**
 * The server's half of an exchange. "linger": ms before it reads on; "first": it does not wait for the client to
 * close.
 */
Tally serve(int connection, const Arguments& arguments) {
    const std::string method = arguments.text("method");
    Opening opening{};
    check(::recv(connection, &opening, sizeof opening, MSG_WAITALL), "receive an opening");
    if (!arguments.text("bystander").empty()) {
        showToBystander(connection, arguments);
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(arguments.number("linger")));
    receiveStream(connection, opening.request - sizeof opening, method);
    sendStream(connection, opening.reply, method);
    char none;
    while (!arguments.number("first") && ::read(connection, &none, 1) > 0) {
    }
    ::close(connection);
    return {opening.request, opening.reply};
}

/** Sends the first `bytes` of a request. "pause": ms behind the very first. */
void begin(int connection, std::uint64_t bytes, const Arguments& arguments) {
    const Opening opening{arguments.number("request", 1000), arguments.number("reply", 1000)};
    const std::uint64_t pause = arguments.number("pause");
    check(::send(connection, &opening, sizeof opening, pause ? 0 : MSG_MORE), "send an opening");
    std::this_thread::sleep_for(std::chrono::milliseconds(pause));
    sendStream(connection, bytes - sizeof opening, arguments.text("method"));
}

/** The client's half. "begun": so many bytes of it have been sent by another program. */
Tally demand(int connection, const Arguments& arguments) {
    const std::uint64_t request = arguments.number("request", 1000);
    const std::uint64_t reply = arguments.number("reply", 1000);
    const std::uint64_t begun = arguments.number("begun");
    const std::string method = arguments.text("method");
    if (begun) {
        sendStream(connection, request - begun, method);
    } else {
        begin(connection, request, arguments);
    }
    receiveStream(connection, reply, method);
    char none;
    while (arguments.number("last") && ::read(connection, &none, 1) > 0) {
    }
    return {reply, request - begun};
}

int connectTo(const Arguments& arguments) {
    const Endpoint server = Endpoint::of(arguments);
    const int connection = makeSocket(arguments, server.family());
    if (arguments.number("buffer")) {
        setOption(connection, SOL_SOCKET, SO_SNDBUFFORCE, static_cast<int>(arguments.number("buffer")),
                  "SO_SNDBUF");
    }
    if (arguments.number("fast")) {  // the first bytes travel with the opening
        setOption(connection, IPPROTO_TCP, TCP_FASTOPEN_CONNECT, 1, "TCP_FASTOPEN_CONNECT");
    }
    check(::connect(connection, server.get(), server.size), "connect");
    return connection;
}

int listenAt(const Arguments& arguments) {
    if (arguments.number("listener")) {
        return static_cast<int>(arguments.number("listener"));
    }
    const Endpoint here = Endpoint::of(arguments);
    const int listener = makeSocket(arguments, here.family());
    setOption(listener, SOL_SOCKET, arguments.number("shared") ? SO_REUSEPORT : SO_REUSEADDR, 1,
              "SO_REUSE...");
    if (here.family() == AF_INET6) {
        setOption(listener, IPPROTO_IPV6, IPV6_V6ONLY, 0, "IPV6_V6ONLY");
    }
    check(::bind(listener, here.get(), here.size), "bind");
    if (arguments.number("fast")) {
        setOption(listener, IPPROTO_TCP, TCP_FASTOPEN, 16, "TCP_FASTOPEN");
    }
    check(::listen(listener, 1024), "listen");
    return listener;
}

int acceptFrom(int listener) {
    return check(::accept(listener, nullptr, nullptr), "accept");
}

/** Serves in threads until the input ends; these have ended when the clients have. */
void serveInThreads(int listener, const Arguments& arguments) {
    std::atomic<std::uint64_t> received = 0;
    std::atomic<std::uint64_t> sent = 0;
    std::thread([&, listener] {
        while (true) {
            std::thread([&, connection = acceptFrom(listener)] {
                const Tally tally = serve(connection, arguments);
                received += tally.received;
                sent += tally.sent;
            }).detach();
        }
    }).detach();
    announceReady();
    waitForInput();
    report({received, sent});
    std::_Exit(0);
}

/** `children` processes wait at one listener, each for one connection. */
void serveInChildren(int listener, const Arguments& arguments) {
    const std::uint64_t children = arguments.number("children");
    for (std::uint64_t i = 0; i < children; ++i) {
        if (check(::fork(), "fork") == 0) {
            report(serve(acceptFrom(listener), arguments));
            std::_Exit(0);
        }
    }
    announceReady();
    while (::wait(nullptr) > 0) {
    }
}

/** A process for each connection, another program if one is named. */
void serveByForking(int listener, const Arguments& arguments) {
    announceReady();
    for (std::uint64_t rest = arguments.number("connections"); rest > 0; --rest) {
        const int connection = acceptFrom(listener);
        if (check(::fork(), "fork") == 0) {
            if (!arguments.text("program").empty()) {
                become(arguments.text("program"), {"tcp-handler", "socket=" + std::to_string(connection)});
            }
            report(serve(connection, arguments));
            std::_Exit(0);
        }
        ::close(connection);
    }
    while (::wait(nullptr) > 0) {
    }
}

/** Leaves the listener to "program", as a service that is started on demand gets it. */
[[noreturn]] void handOver(int listener, Arguments arguments) {
    const std::string program = arguments.text("program");
    arguments.set("listener", std::to_string(listener));
    arguments.set("style", "threads");
    std::vector<std::string> words = arguments.words();
    words.insert(words.begin(), "tcp-server");
    become(program, words);
}

}  // namespace

/** style: "threads", "prefork", "fork" (with "program": that one takes over each connection), "hand-over". */
void tcpServer(const Arguments& arguments) {
    const int listener = listenAt(arguments);
    const std::string style = arguments.text("style", "threads");
    if (style == "prefork") {
        serveInChildren(listener, arguments);
    } else if (style == "fork") {
        serveByForking(listener, arguments);
    } else if (style == "hand-over") {
        handOver(listener, arguments);
    } else {
        serveInThreads(listener, arguments);
    }
}

/**
 * "count" connections one after the other. "wait": says ready when the first is connected and waits for input.
 * "program": another one takes over the connection by exec, after "begun" bytes. "unlink":
 * its file goes first.
 */
void tcpClient(const Arguments& arguments) {
    if (arguments.number("unlink")) {
        check(::unlink(programPath().c_str()), "unlink");
    }
    Tally all;
    for (std::uint64_t i = 0; i < arguments.number("count", 1); ++i) {
        const int connection = connectTo(arguments);
        if (arguments.number("wait") && i == 0) {
            announceReady();
            waitForInput();
        }
        if (const std::string program = arguments.text("program"); !program.empty()) {
            Arguments forHandler = arguments;
            forHandler.set("socket", std::to_string(connection));
            forHandler.set("client", "1");
            if (const std::uint64_t begun = arguments.number("begun")) {
                begin(connection, begun, arguments);
                report({0, begun});
            }
            std::vector<std::string> words = forHandler.words();
            words.insert(words.begin(), "tcp-handler");
            become(program, words);
        }
        all += demand(connection, arguments);
        ::close(connection);
    }
    report(all);
}

/** One end of a connection that another program has made. */
void tcpHandler(const Arguments& arguments) {
    const int connection = static_cast<int>(arguments.number("socket"));
    report(arguments.number("client") ? demand(connection, arguments) : serve(connection, arguments));
}

/** Finds nothing on a connection, then looks at what comes, and leaves it there. */
void tcpBystander(const Arguments& arguments) {
    const int connection = static_cast<int>(arguments.number("socket"));
    char byte;
    if (::recv(connection, &byte, 1, MSG_DONTWAIT) >= 0) {
        die("there is something on the connection already");
    }
    announceReady();
    check(::recv(connection, &byte, 1, MSG_PEEK), "look at a connection");
}

/** Accepts one connection and hands it to "program" over a local socket. */
void tcpPasser(const Arguments& arguments) {
    int ends[2];
    check(::socketpair(AF_UNIX, SOCK_DGRAM, 0, ends), "socketpair");
    const int listener = listenAt(arguments);
    if (check(::fork(), "fork") == 0) {
        ::close(listener);
        become(arguments.text("program"), {"tcp-receiver", "channel=" + std::to_string(ends[1])});
    }
    announceReady();
    int connection = acceptFrom(listener);
    alignas(cmsghdr) char control[CMSG_SPACE(sizeof connection)] = {};
    char one = 1;
    iovec part{&one, 1};
    msghdr message{};
    message.msg_iov = &part;
    message.msg_iovlen = 1;
    message.msg_control = control;
    message.msg_controllen = sizeof control;
    cmsghdr* const header = CMSG_FIRSTHDR(&message);
    header->cmsg_level = SOL_SOCKET;
    header->cmsg_type = SCM_RIGHTS;
    header->cmsg_len = CMSG_LEN(sizeof connection);
    std::memcpy(CMSG_DATA(header), &connection, sizeof connection);
    check(::sendmsg(ends[0], &message, 0), "pass a socket");
    ::close(connection);
    ::wait(nullptr);
}

void tcpReceiver(const Arguments& arguments) {
    int connection = -1;
    alignas(cmsghdr) char control[CMSG_SPACE(sizeof connection)];
    char one;
    iovec part{&one, 1};
    msghdr message{};
    message.msg_iov = &part;
    message.msg_iovlen = 1;
    message.msg_control = control;
    message.msg_controllen = sizeof control;
    check(::recvmsg(static_cast<int>(arguments.number("channel")), &message, 0), "take a socket");
    std::memcpy(&connection, CMSG_DATA(CMSG_FIRSTHDR(&message)), sizeof connection);
    report(serve(connection, arguments));
}

}  // namespace traffic
