// SPDX-License-Identifier: GPL-3.0-or-later
#include "service/capture/bpf/BpfSource.h"

#include <time.h>

#include <algorithm>
#include <chrono>
#include <cstring>
#include <iterator>
#include <utility>

#include "service/log/Log.h"

namespace service {

namespace {

constexpr int maxQuietPolls = 60;  ///< as many as the kernel's flows have that end by their quiet

std::uint64_t sinceBoot() {
    timespec now{};
    ::clock_gettime(CLOCK_BOOTTIME, &now);
    return static_cast<std::uint64_t>(now.tv_sec) * 1'000'000'000 + static_cast<std::uint64_t>(now.tv_nsec);
}

IpAddress addressOf(const __u8 (&bytes)[16], __u16 port, __u32 version) {
    IpAddress address;
    address.family = version == 6 ? IpAddress::IPv6 : IpAddress::IPv4;
    address.port = port;
    std::memcpy(address.address.data(), bytes, IpAddress::addressLength(address.family));
    return address;
}

std::int64_t signedCount(__u64 count) {
    return static_cast<std::int64_t>(count);
}

std::string ofRoom(__u64 taken, __u64 room) {
    return std::to_string(taken) + " of " + std::to_string(room);
}

/** What went wrong, as far as anything did. */
std::vector<StatusLine> linesOf(const losses& lost, std::uint64_t missedCalls) {
    std::vector<StatusLine> lines;
    const auto add = [&lines](const char* name, __u64 count, const char* meaning) {
        if (count != 0) {
            lines.push_back({name, std::to_string(count) + meaning});
        }
    };
    add("lost", lost.bytes, " bytes");
    add("no room for a flow", lost.flows, " packets, counted without it");
    add("no room for a handshake", lost.handshakes, " packets, counted without it");
    add("no room for an end", lost.events, " connections, counted without it");
    add("no memory for a socket", lost.sockets, " packets");
    add("no room for a name", lost.executables, " times");
    add("in nobody's hands", lost.strangers, " sockets, counted for the unknown application");
    add("not understood", lost.packets, " packets");
    add("left out by the kernel", missedCalls, " calls of a program that was at work on the same processor");
    return lines;
}

__u64 sumOf(const losses& lost) {
    return lost.sockets + lost.flows + lost.handshakes + lost.events + lost.executables + lost.bytes +
           lost.packets + lost.strangers;
}

/** Whether the flow's end was told before: what comes now are packets that were late for it. */
bool isLate(const flow& reported) {
    return reported.ended == FLOW_LATE;
}

}  // namespace

std::unique_ptr<BpfSource> BpfSource::create(std::string& error, const KernelFeatures& features) {
    auto programs = BpfPrograms::load(features, error);
    return programs ? std::unique_ptr<BpfSource>(new BpfSource(std::move(programs))) : nullptr;
}

BpfSource::BpfSource(std::unique_ptr<BpfPrograms> programs)
    : m_Programs(std::move(programs)), m_Names(*m_Programs) {}

std::vector<TrafficSample> BpfSource::read(Moment now, bool isLast) {
    m_Now = now;
    m_SinceBoot = sinceBoot();
    m_ClosingNext.clear();
    const auto enter = [this](const flow& reported) { this->enter(reported); };
    m_Programs->readEvents(enter);
    m_Programs->readTables(enter, isLast);
    for (auto& [key, sample] : m_Closing) {
        sample.closed = true;
        m_Samples.push_back(std::move(sample));
    }
    m_Closing = std::move(m_ClosingNext);
    closeQuietLate();
    noteStatus();
    return std::exchange(m_Samples, {});
}

TrafficSample BpfSource::sampleOf(const flow& reported) {
    using namespace std::chrono;
    const nanoseconds age(m_SinceBoot - std::min<std::uint64_t>(reported.opened, m_SinceBoot));
    TrafficSample sample;
    sample.connectionKey = reported.id;
    sample.application = m_Names.applicationOf(reported.executable);
    sample.socketDomain = reported.domain;
    sample.socketType = reported.type;
    sample.socketProtocol = reported.protocol;
    sample.direction = static_cast<Direction>(reported.direction);
    sample.local = addressOf(reported.ends.local, reported.ends.local_port, reported.ends.version);
    sample.remote = addressOf(reported.ends.remote, reported.ends.remote_port, reported.ends.version);
    sample.opened = m_Now - duration_cast<seconds>(age);
    sample.moved = {signedCount(reported.received.wire), signedCount(reported.sent.wire)};
    sample.payload = {signedCount(reported.received.payload), signedCount(reported.sent.payload)};
    return sample;
}

void BpfSource::enter(const flow& reported) {
    TrafficSample sample = sampleOf(reported);
    if (isLate(reported)) {
        enterLate(sample);
        return;
    }
    sample.closed = reported.ended != 0 && reported.lingers == 0;
    if (reported.ended != 0 && reported.lingers != 0) {
        TrafficSample closing = sample;
        closing.moved = {};
        closing.payload = {};
        m_ClosingNext.emplace(closing.connectionKey, std::move(closing));
    }
    m_Samples.push_back(std::move(sample));
}

/** A connection that was closed already gets another one beside it, for all that comes later still. */
void BpfSource::enterLate(TrafficSample& sample) {
    const std::uint64_t key = sample.connectionKey;
    if (!m_Closing.contains(key) && !m_ClosingNext.contains(key)) {
        const auto [late, isNew] = m_Late.try_emplace(key);
        sample.connectionKey = isNew ? m_NextLateKey++ : late->second.last.connectionKey;
        late->second = {.last = sample};
    }
    m_Samples.push_back(std::move(sample));
}

void BpfSource::closeQuietLate() {
    for (auto entry = m_Late.begin(); entry != m_Late.end();) {
        Late& late = entry->second;
        if (++late.quietPolls < maxQuietPolls) {
            ++entry;
            continue;
        }
        late.last.closed = true;
        late.last.moved = {};
        late.last.payload = {};
        m_Samples.push_back(std::move(late.last));
        entry = m_Late.erase(entry);
    }
}

void BpfSource::noteStatus() {
    const Health now{.lost = m_Programs->countedLosses(),
                     .missedCalls = m_Programs->countMissedCalls(),
                     .tables = m_Programs->tableOccupancy(),
                     .executables = m_Programs->keptExecutables(),
                     .readingFailure = m_Programs->readingFailure()};
    if (!now.readingFailure.empty() && m_Health.readingFailure.empty()) {
        logLine("bpf: the tables can't be read, counting goes on when they can: ", now.readingFailure);
    }
    {
        const std::lock_guard lock(m_HealthMutex);
        m_Health = now;
    }
    const std::uint64_t sum = sumOf(now.lost) + now.missedCalls;
    if (sum <= m_NextLogged) {
        return;
    }
    m_NextLogged = 2 * sum;
    for (const StatusLine& line : linesOf(now.lost, now.missedCalls)) {
        logLine("bpf: ", line.name, ": ", line.value);
    }
}

std::vector<StatusLine> BpfSource::status() const {
    const std::uint64_t pasts = m_Programs->countPasts();
    const std::lock_guard lock(m_HealthMutex);
    std::vector<StatusLine> lines{
        {"sockets", std::to_string(m_Health.tables.sockets)},
        {"flow table", ofRoom(m_Health.tables.flows, MAX_FLOWS)},
        {"handshake table", ofRoom(m_Health.tables.handshakes, MAX_HANDSHAKES)},
        {"traffic without a flow", ofRoom(m_Health.tables.rests, MAX_RESTS)},
        {"executables", ofRoom(m_Health.executables, MAX_EXECUTABLES)},
        {"ended flows", ofRoom(pasts, MAX_PASTS) + ", the oldest make room"},
    };
    if (!m_Health.readingFailure.empty()) {
        lines.push_back({"tables not read", m_Health.readingFailure});
    }
    std::ranges::move(linesOf(m_Health.lost, m_Health.missedCalls), std::back_inserter(lines));
    return lines;
}

}  // namespace service
