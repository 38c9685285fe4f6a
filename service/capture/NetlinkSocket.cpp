// SPDX-License-Identifier: GPL-3.0-or-later
#include "service/capture/NetlinkSocket.h"

#include <linux/netlink.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace service {

namespace {

/** The kernel never fills more than 32 KiB per datagram of a dump, however large the reader's buffer. */
constexpr std::size_t datagramCapacity = 32'768;

/** The kernel answers a dump from within the call that reads it; this only bounds what should not happen. */
constexpr timeval answerPatience{.tv_sec = 2, .tv_usec = 0};

std::string failure(const char* operation, int errorNumber) {
    return std::string("netlink ") + operation + ": " + std::strerror(errorNumber);
}

}  // namespace

std::unique_ptr<NetlinkSocket> NetlinkSocket::open(int protocol, std::string& error) {
    const int descriptor = ::socket(AF_NETLINK, SOCK_RAW | SOCK_CLOEXEC, protocol);
    if (descriptor < 0) {
        error = failure("socket", errno);
        return nullptr;
    }
    std::unique_ptr<NetlinkSocket> opened(new NetlinkSocket(descriptor));
    // Notices go to sockets with an address only; the kernel picks one.
    sockaddr_nl anyAddress{};
    anyAddress.nl_family = AF_NETLINK;
    if (::bind(descriptor, reinterpret_cast<const sockaddr*>(&anyAddress), sizeof anyAddress) != 0) {
        error = failure("address", errno);
        return nullptr;
    }
    if (::setsockopt(descriptor, SOL_SOCKET, SO_RCVTIMEO, &answerPatience, sizeof answerPatience) != 0) {
        error = failure("receive timeout", errno);
        return nullptr;
    }
    return opened;
}

NetlinkSocket::NetlinkSocket(int descriptor) : m_Descriptor(descriptor), m_Buffer(datagramCapacity) {}

NetlinkSocket::~NetlinkSocket() {
    ::close(m_Descriptor);
}

bool NetlinkSocket::subscribe(int group, std::string& error) {
    if (::setsockopt(m_Descriptor, SOL_NETLINK, NETLINK_ADD_MEMBERSHIP, &group, sizeof group) != 0) {
        error = failure("subscription", errno);
        return false;
    }
    return true;
}

void NetlinkSocket::reserveReceiveBuffer(int bytes) {
    // The first goes past the system's limit and needs CAP_NET_ADMIN, the second takes what the limit allows.
    if (::setsockopt(m_Descriptor, SOL_SOCKET, SO_RCVBUFFORCE, &bytes, sizeof bytes) != 0) {
        ::setsockopt(m_Descriptor, SOL_SOCKET, SO_RCVBUF, &bytes, sizeof bytes);
    }
}

NetlinkSocket::DumpResult NetlinkSocket::dump(std::uint16_t type, std::span<const std::byte> request,
                                              const Visitor& visit, std::string& error) {
    if (!sendDumpRequest(type, request, error)) {
        return DumpResult::Failed;
    }
    bool interrupted = false;
    Progress progress = Progress::More;
    while (progress == Progress::More) {
        const auto datagram = receive(0);
        if (!datagram) {
            error = failure("receive", errno);
            return DumpResult::Failed;
        }
        progress = visitDatagram(*datagram, visit, interrupted, error);
    }
    if (progress == Progress::Failed) {
        return DumpResult::Failed;
    }
    return interrupted ? DumpResult::Interrupted : DumpResult::Complete;
}

bool NetlinkSocket::sendDumpRequest(std::uint16_t type, std::span<const std::byte> request,
                                    std::string& error) {
    nlmsghdr header{};
    header.nlmsg_len = static_cast<std::uint32_t>(NLMSG_HDRLEN + request.size());
    header.nlmsg_type = type;
    header.nlmsg_flags = NLM_F_REQUEST | NLM_F_DUMP;
    header.nlmsg_seq = ++m_Sequence;

    std::vector<std::byte> message(header.nlmsg_len);
    std::memcpy(message.data(), &header, sizeof header);
    std::memcpy(message.data() + NLMSG_HDRLEN, request.data(), request.size());
    if (::send(m_Descriptor, message.data(), message.size(), 0) < 0) {
        error = failure("request", errno);
        return false;
    }
    return true;
}

NetlinkSocket::Progress NetlinkSocket::visitDatagram(std::span<const std::byte> datagram,
                                                     const Visitor& visit, bool& interrupted,
                                                     std::string& error) const {
    while (const auto message = takeNetlinkMessage(datagram)) {
        if (message->sequence != m_Sequence) {
            continue;
        }
        interrupted = interrupted || (message->flags & NLM_F_DUMP_INTR) != 0;
        if (message->type != NLMSG_DONE && message->type != NLMSG_ERROR) {
            visit(*message);
            continue;
        }
        if (const int errorNumber = netlinkErrorOf(*message)) {
            error = failure("dump", errorNumber);
            return Progress::Failed;
        }
        return Progress::Done;
    }
    if (!datagram.empty()) {
        error = "netlink dump: malformed answer";
        return Progress::Failed;
    }
    return Progress::More;
}

bool NetlinkSocket::receivePending(const Visitor& visit) {
    bool complete = true;
    for (;;) {
        auto datagram = receive(MSG_DONTWAIT);
        if (!datagram && errno == ENOBUFS) {
            complete = false;  // said once; what was queued before the loss can still be read
            continue;
        }
        if (!datagram) {
            return complete;
        }
        while (const auto message = takeNetlinkMessage(*datagram)) {
            visit(*message);
        }
    }
}

std::optional<std::span<const std::byte>> NetlinkSocket::receive(int flags) {
    for (;;) {
        sockaddr_nl sender{};
        socklen_t senderLength = sizeof sender;
        const ssize_t length = ::recvfrom(m_Descriptor, m_Buffer.data(), m_Buffer.size(), flags | MSG_TRUNC,
                                          reinterpret_cast<sockaddr*>(&sender), &senderLength);
        if (length < 0 && errno == EINTR) {
            continue;
        }
        if (length < 0) {
            return std::nullopt;
        }
        if (static_cast<std::size_t>(length) > m_Buffer.size()) {
            errno = EMSGSIZE;
            return std::nullopt;
        }
        if (sender.nl_pid == 0) {  // the kernel; other processes may write to netlink sockets too
            return std::span<const std::byte>(m_Buffer).first(static_cast<std::size_t>(length));
        }
    }
}

}  // namespace service
