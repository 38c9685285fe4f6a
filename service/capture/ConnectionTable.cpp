// SPDX-License-Identifier: GPL-3.0-or-later
#include "service/capture/ConnectionTable.h"

#include <sys/socket.h>

#include <algorithm>
#include <utility>

namespace service {

namespace {

/** A search may race with a process that is just starting, ending or passing its socket on. */
constexpr int maxSearches = 3;

/** The kernel's own sockets end without a notice, so the set of them would grow for ever. About 0.5 MB. */
constexpr std::size_t maxClosedWithoutNotice = 10'000;

constexpr int tcpProtocol = 6;

/** Without a process, but able to be accepted by one; in any other state its process has given it up. */
bool canBeAccepted(TcpState state) {
    return state == TcpState::Established || state == TcpState::CloseWait;
}

/** Moves `counted` up to `total` and gives the difference; a total below it changes nothing. */
ByteCount advance(ByteCount& counted, const ByteCount& total) {
    const ByteCount moved{.received = std::max<std::int64_t>(total.received - counted.received, 0),
                          .sent = std::max<std::int64_t>(total.sent - counted.sent, 0)};
    counted += moved;
    return moved;
}

}  // namespace

ConnectionTable::ConnectionTable(std::uint64_t missedDumps) : m_MissedDumps(missedDumps) {}

void ConnectionTable::enterDump(const std::vector<SocketReport>& reports, bool whole, Moment now) {
    m_ListeningPorts.beginDump();
    for (const SocketReport& report : reports) {
        if (report.state == TcpState::Listen) {
            m_ListeningPorts.add(report);
        }
    }
    for (const SocketReport& report : reports) {
        if (report.state != TcpState::Listen && report.payload) {
            enterConnection(report, now);
        }
    }
    if (whole) {
        closeMissing();
        ++m_WholeDumps;
    }
}

void ConnectionTable::enterConnection(const SocketReport& report, Moment now) {
    auto position = m_Connections.find(report.cookie);
    if (position != m_Connections.end() && position->second.sample.remote != report.remote) {
        close(position);  // its process disconnected the socket and connected it anew
        position = m_Connections.end();
    }
    const bool isNew = position == m_Connections.end();
    if (isNew) {
        position = open(report, now);
    }
    Connection& connection = position->second;
    count(connection, report);
    if (isNew && m_WholeDumps == 0) {
        connection.sample.moved = {};
        connection.sample.payload = {};
    }
    connection.lastDump = m_WholeDumps;
    if (report.inode != 0) {
        connection.inode = report.inode;
    }
    if (connection.inode == 0 && !canBeAccepted(report.state) && !connection.sample.application) {
        connection.sample.application = unknownApplication();
    }
}

ConnectionTable::Connections::iterator ConnectionTable::open(const SocketReport& report, Moment now) {
    const auto position = m_Connections.try_emplace(report.cookie).first;
    TrafficSample& sample = position->second.sample;
    sample.connectionKey = m_NextKey++;
    sample.socketDomain = report.socketDomain;
    sample.socketType = SOCK_STREAM;
    sample.socketProtocol = tcpProtocol;
    sample.direction = m_ListeningPorts.directionOf(report);
    sample.local = report.local;
    sample.remote = report.remote;
    sample.opened = now;
    return position;
}

void ConnectionTable::count(Connection& connection, const SocketReport& report) {
    const ByteCount payload = advance(connection.payload, *report.payload);
    connection.sample.payload += payload;
    connection.sample.moved += payload;
    connection.sample.moved += advance(connection.overhead, report.overhead);
}

SocketOwners::Inodes ConnectionTable::inodesWithoutOwner() const {
    SocketOwners::Inodes inodes;
    for (const auto& [cookie, connection] : m_Connections) {
        if (!connection.sample.application && connection.inode != 0) {
            inodes.insert(connection.inode);
        }
    }
    return inodes;
}

void ConnectionTable::enterOwners(const SocketOwners::Owners& owners) {
    for (auto& [cookie, connection] : m_Connections) {
        if (connection.sample.application || connection.inode == 0) {
            continue;
        }
        if (const auto owner = owners.find(connection.inode); owner != owners.end()) {
            connection.sample.application = owner->second;
        } else if (++connection.searches == maxSearches) {
            connection.sample.application = unknownApplication();
        }
    }
}

void ConnectionTable::enterDestroyed(const SocketReport& report, Moment now) {
    if (m_ClosedWithoutNotice.erase(report.cookie) != 0 || !report.payload) {
        return;
    }
    auto position = m_Connections.find(report.cookie);
    if (position == m_Connections.end()) {
        // Before the first dump its bytes can't be told from older ones; a socket that moved none was never
        // connected, or only listened.
        if (m_WholeDumps == 0 || *report.payload == ByteCount{}) {
            return;
        }
        position = open(report, now);
        Direction& direction = position->second.sample.direction;
        if (direction ==
            Direction::Output) {  // its listener may have come and gone between two dumps as well
            direction = Direction::Undefined;
        }
    }
    count(position->second, report);
    close(position);
}

ConnectionTable::Connections::iterator ConnectionTable::close(Connections::iterator position) {
    TrafficSample& sample = position->second.sample;
    if (!sample.application) {
        sample.application = unknownApplication();
    }
    sample.closed = true;
    m_Ended.push_back(std::move(sample));
    return m_Connections.erase(position);
}

void ConnectionTable::closeMissing() {
    for (auto position = m_Connections.begin(); position != m_Connections.end();) {
        if (m_WholeDumps - position->second.lastDump < m_MissedDumps) {
            ++position;
            continue;
        }
        rememberWithoutNotice(position->first);
        position = close(position);
    }
}

void ConnectionTable::rememberWithoutNotice(std::uint64_t cookie) {
    if (m_ClosedWithoutNotice.size() >= maxClosedWithoutNotice) {
        m_ClosedWithoutNotice.clear();
    }
    m_ClosedWithoutNotice.insert(cookie);
}

std::vector<TrafficSample> ConnectionTable::takeSamples() {
    std::vector<TrafficSample> samples = std::exchange(m_Ended, {});
    for (auto& [cookie, connection] : m_Connections) {
        if (!connection.sample.application) {
            continue;
        }
        if (!connection.handedOut || connection.sample.moved != ByteCount{}) {
            samples.push_back(connection.sample);
            connection.sample.moved = {};
            connection.sample.payload = {};
            connection.handedOut = true;
        }
    }
    return samples;
}

}  // namespace service
