// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/capture/generator/Stream.h"

#include <fcntl.h>
#include <linux/errqueue.h>
#include <poll.h>
#include <sys/mman.h>
#include <sys/sendfile.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <functional>

#include "tests/capture/generator/Generator.h"
#include "tests/capture/generator/Ring.h"

namespace traffic {

namespace {

std::array<char, 64 * 1024> chunk;

/** Calls `step` with what remains, at most a chunk, until it has moved all. */
void repeat(std::uint64_t bytes, const std::function<ssize_t(std::size_t)>& step, const char* what) {
    while (bytes > 0) {
        const ssize_t moved = step(std::min<std::uint64_t>(bytes, chunk.size()));
        if (moved == 0) {
            errno = EPIPE;
        }
        bytes -= static_cast<std::uint64_t>(check(moved == 0 ? -1 : moved, what));
    }
}

void sendFile(int socket, std::uint64_t bytes) {
    const int file = check(::memfd_create("sent", MFD_CLOEXEC), "memfd_create");
    check(::ftruncate(file, static_cast<off_t>(bytes)), "ftruncate");
    repeat(
        bytes, [&](std::size_t size) { return ::sendfile(socket, file, nullptr, size); }, "sendfile");
    ::close(file);
}

struct Pipe {
    int ends[2];
    Pipe() { check(::pipe(ends), "pipe"); }
    ~Pipe() {
        ::close(ends[0]);
        ::close(ends[1]);
    }
};

void sendSpliced(int socket, std::uint64_t bytes) {
    const Pipe pipe;
    repeat(
        bytes,
        [&](std::size_t size) {
            const ssize_t filled = check(::write(pipe.ends[1], chunk.data(), size), "write to a pipe");
            repeat(
                static_cast<std::uint64_t>(filled),
                [&](std::size_t rest) { return ::splice(pipe.ends[0], nullptr, socket, nullptr, rest, 0); },
                "splice");
            return filled;
        },
        "splice");
}

void receiveSpliced(int socket, std::uint64_t bytes) {
    const Pipe pipe;
    repeat(
        bytes,
        [&](std::size_t size) {
            const ssize_t filled =
                check(::splice(socket, nullptr, pipe.ends[1], nullptr, size, 0), "splice from a socket");
            repeat(
                static_cast<std::uint64_t>(filled),
                [&](std::size_t rest) { return ::read(pipe.ends[0], chunk.data(), rest); }, "read a pipe");
            return filled;
        },
        "splice");
}

void sendWithoutCopies(int socket, std::uint64_t bytes) {
    setOption(socket, SOL_SOCKET, SO_ZEROCOPY, 1, "SO_ZEROCOPY");
    std::uint32_t calls = 0;
    repeat(
        bytes,
        [&](std::size_t size) {
            ++calls;
            return ::send(socket, chunk.data(), size, MSG_ZEROCOPY);
        },
        "send without copies");
    for (std::uint32_t done = 0; done < calls;) {  // the kernel tells in ranges when it is through with them
        pollfd ready{.fd = socket, .events = 0, .revents = 0};
        check(::poll(&ready, 1, -1), "poll");
        std::array<char, 256> control;
        msghdr message{};
        message.msg_control = control.data();
        message.msg_controllen = control.size();
        check(::recvmsg(socket, &message, MSG_ERRQUEUE), "read completions");
        const auto* const completion =
            reinterpret_cast<const sock_extended_err*>(CMSG_DATA(CMSG_FIRSTHDR(&message)));
        done += completion->ee_data - completion->ee_info + 1;
    }
}

void sendMany(int socket, std::uint64_t bytes) {
    repeat(
        bytes,
        [&](std::size_t size) -> ssize_t {
            std::array<iovec, 4> parts;
            std::array<mmsghdr, 4> messages{};
            for (std::size_t i = 0; i < parts.size(); ++i) {
                parts[i] = {chunk.data(), i == 0 ? size - size / 4 * 3 : size / 4};
                messages[i].msg_hdr.msg_iov = &parts[i];
                messages[i].msg_hdr.msg_iovlen = 1;
            }
            // Without space for all it stops at a message; the rest of a short one is not sent.
            const int count = check(::sendmmsg(socket, messages.data(), messages.size(), 0), "sendmmsg");
            ssize_t sent = 0;
            for (int i = 0; i < count; ++i) {
                sent += messages[static_cast<std::size_t>(i)].msg_len;
            }
            return sent;
        },
        "sendmmsg");
}

}  // namespace

void sendStream(int socket, std::uint64_t bytes, const std::string& method) {
    if (method == "sendfile") {
        sendFile(socket, bytes);
    } else if (method == "splice") {
        sendSpliced(socket, bytes);
    } else if (method == "zerocopy") {
        sendWithoutCopies(socket, bytes);
    } else if (method == "mmsg") {
        sendMany(socket, bytes);
    } else if (method.starts_with("uring")) {
        Ring ring(method);
        repeat(
            bytes, [&](std::size_t size) { return ring.send(socket, chunk.data(), size); }, "io_uring");
    } else {
        repeat(
            bytes, [&](std::size_t size) { return ::write(socket, chunk.data(), size); }, "write");
    }
}

void receiveStream(int socket, std::uint64_t bytes, const std::string& method) {
    if (method == "splice") {
        receiveSpliced(socket, bytes);
    } else if (method.starts_with("uring")) {
        Ring ring(method);
        repeat(
            bytes, [&](std::size_t size) { return ring.receive(socket, chunk.data(), size); }, "io_uring");
    } else {
        repeat(
            bytes, [&](std::size_t size) { return ::read(socket, chunk.data(), size); }, "read");
    }
}

}  // namespace traffic
