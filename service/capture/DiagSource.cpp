// SPDX-License-Identifier: GPL-3.0-or-later
#include "service/capture/DiagSource.h"

#include <linux/netlink.h>
#include <linux/sock_diag.h>
#include <sys/socket.h>

#include <utility>

#include "service/capture/InetDiag.h"
#include "service/log/Log.h"

namespace service {

namespace {

/**
 * How many dumps in a row a connection may be missing from before it counts as ended. Without notices two,
 * because a dump can skip a socket while its neighbours come and go. With notices the last counters are worth
 * waiting for; they come late when a process keeps a connection that its peer has reset, and never for the
 * kernel's own sockets.
 */
constexpr std::uint64_t missedDumpsWithoutNotices = 2;
constexpr std::uint64_t missedDumpsWithNotices = 10;

/**
 * What is asked for; the kernel doubles it, and a notice takes 1,280 bytes there, so 13,000 connections may
 * end between two polls. Without CAP_NET_ADMIN it gives twice net.core.rmem_max: by default room for 330.
 */
constexpr int noticesBufferBytes = 8 * 1024 * 1024;

using DumpResult = NetlinkSocket::DumpResult;

/** Appends all TCP sockets of a domain to `reports`; on failure maybe some. */
DumpResult dumpOnce(std::int32_t socketDomain, std::vector<SocketReport>& reports, std::string& error) {
    // A socket of its own for each dump: nothing is left over from one that failed.
    const auto socket = NetlinkSocket::open(NETLINK_SOCK_DIAG, error);
    if (!socket) {
        return DumpResult::Failed;
    }
    const auto enter = [&reports](const NetlinkMessage& message) {
        if (auto report = inetdiag::decode(message.payload)) {
            reports.push_back(*report);
        }
    };
    return socket->dump(inetdiag::messageType, inetdiag::tcpDumpRequest(socketDomain), enter, error);
}

/** As `dumpOnce`, but an interrupted dump is repeated once. */
DumpResult dumpTcpSockets(std::int32_t socketDomain, std::vector<SocketReport>& reports, std::string& error) {
    const std::size_t before = reports.size();
    const DumpResult result = dumpOnce(socketDomain, reports, error);
    if (result != DumpResult::Interrupted) {
        return result;
    }
    reports.resize(before);
    return dumpOnce(socketDomain, reports, error);
}

std::unique_ptr<NetlinkSocket> subscribeToNotices(std::string& error) {
    auto socket = NetlinkSocket::open(NETLINK_SOCK_DIAG, error);
    if (!socket || !socket->subscribe(SKNLGRP_INET_TCP_DESTROY, error) ||
        !socket->subscribe(SKNLGRP_INET6_TCP_DESTROY, error)) {
        return nullptr;
    }
    socket->reserveReceiveBuffer(noticesBufferBytes);
    return socket;
}

}  // namespace

std::unique_ptr<DiagSource> DiagSource::create(std::string& error) {
    std::vector<std::int32_t> socketDomains;
    for (const std::int32_t socketDomain : {AF_INET, AF_INET6}) {
        std::vector<SocketReport> reports;
        if (dumpTcpSockets(socketDomain, reports, error) != DumpResult::Failed) {
            socketDomains.push_back(socketDomain);  // IPv6 may be absent from the kernel
        }
    }
    if (socketDomains.empty()) {
        return nullptr;
    }
    std::string refusal;
    auto notices = subscribeToNotices(refusal);
    if (!notices) {
        logLine("diag: no notices of ended connections, so the last second of each is lost: ", refusal);
    }
    return std::unique_ptr<DiagSource>(new DiagSource(std::move(socketDomains), std::move(notices)));
}

DiagSource::DiagSource(std::vector<std::int32_t> socketDomains, std::unique_ptr<NetlinkSocket> notices)
    : m_SocketDomains(std::move(socketDomains)),
      m_Notices(std::move(notices)),
      m_Connections(m_Notices ? missedDumpsWithNotices : missedDumpsWithoutNotices) {}

std::vector<TrafficSample> DiagSource::poll(Moment now) {
    enterDump(now);
    if (const SocketOwners::Inodes inodes = m_Connections.inodesWithoutOwner(); !inodes.empty()) {
        m_Connections.enterOwners(m_Owners.find(inodes));
    }
    if (m_Notices) {
        enterNotices(now);
    }
    return m_Connections.takeSamples();
}

void DiagSource::enterDump(Moment now) {
    std::vector<SocketReport> reports;
    std::string error;
    bool whole = true;
    bool failing = false;
    for (const std::int32_t socketDomain : m_SocketDomains) {
        const DumpResult result = dumpTcpSockets(socketDomain, reports, error);
        whole = whole && result == DumpResult::Complete;
        failing = failing || result == DumpResult::Failed;
    }
    if (failing && !m_DumpFailing) {
        logLine("diag: sockets can't be read, counting goes on when they can: ", error);
    }
    m_DumpFailing = failing;
    m_FailedDumps += failing ? 1 : 0;
    m_Connections.enterDump(reports, whole, now);
}

void DiagSource::enterNotices(Moment now) {
    const bool complete = m_Notices->receivePending([this, now](const NetlinkMessage& message) {
        if (const auto report = inetdiag::decode(message.payload)) {
            m_Connections.enterDestroyed(*report, now);
        }
    });
    if (!complete && !m_NoticesLost) {
        logLine(
            "diag: more connections ended than there was room to note; the short ones among them are lost");
    }
    m_NoticesLost = !complete;
    m_LossesOfNotices += complete ? 0 : 1;
}

std::vector<StatusLine> DiagSource::status() const {
    std::vector<StatusLine> lines{{"counts", "TCP in this network namespace, once a second"}};
    if (!m_Notices) {
        lines.push_back({"ends not told", "the last second of each connection is lost"});
    }
    if (const std::uint64_t count = m_FailedDumps; count != 0) {
        lines.push_back({"sockets not read", std::to_string(count) + " times"});
    }
    if (const std::uint64_t count = m_LossesOfNotices; count != 0) {
        lines.push_back(
            {"no room for ends", std::to_string(count) + " times; some short connections are lost"});
    }
    return lines;
}

}  // namespace service
