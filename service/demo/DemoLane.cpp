// SPDX-License-Identifier: GPL-3.0-or-later
#include "service/demo/DemoLane.h"

#include <netinet/in.h>
#include <sys/socket.h>

#include <algorithm>
#include <utility>

namespace service {

namespace {

using namespace std::chrono;

/** Host of the local network: 192.0.2.0/24 and 2001:db8:0:1::/64, which are meant for documentation only. */
IpAddress lanAddress(bool ipv6, int host, std::uint16_t port) {
    const auto last = static_cast<std::uint8_t>(host);
    if (ipv6) {
        return {IpAddress::IPv6, port, {0x20, 0x01, 0x0d, 0xb8, 0, 0, 0, 1, 0, 0, 0, 0, 0, 0, 0, last}};
    }
    return {IpAddress::IPv4, port, {192, 0, 2, last}};
}

/** Host of the wide world, which has 508 addresses: the other two networks for documentation, and as many of
 * IPv6. */
IpAddress worldAddress(bool ipv6, int host, std::uint16_t port) {
    const auto last = static_cast<std::uint8_t>(1 + host % 254);
    const bool firstNetwork = host / 254 % 2 == 0;
    if (ipv6) {
        const std::uint8_t site = firstNetwork ? 0x64 : 0x71;
        return {IpAddress::IPv6, port, {0x20, 0x01, 0x0d, 0xb8, site, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, last}};
    }
    if (firstNetwork) {
        return {IpAddress::IPv4, port, {198, 51, 100, last}};
    }
    return {IpAddress::IPv4, port, {203, 0, 113, last}};
}

constexpr int thisMachine = 10;  ///< its host number in the local network

std::int32_t socketTypeOf(std::int32_t protocol) {
    return protocol == IPPROTO_TCP ? SOCK_STREAM : protocol == IPPROTO_UDP ? SOCK_DGRAM : SOCK_RAW;
}

constexpr std::int64_t payloadOfPacket = 1448;  ///< of TCP on an Ethernet; the others' are about as full

std::int64_t packetsFor(std::int64_t payload) {
    return (payload + payloadOfPacket - 1) / payloadOfPacket;
}

/** What a connection moves at the IP layer for a payload: every packet has headers, every second of TCP is
 * acknowledged by an empty one. */
ByteCount withHeaders(const ByteCount& payload, const TrafficSample& sample) {
    const bool isTcp = sample.socketProtocol == IPPROTO_TCP;
    const std::int64_t header = (sample.socketDomain == AF_INET6 ? 40 : 20) + (isTcp ? 32 : 8);
    const std::int64_t packetsReceived = packetsFor(payload.received);
    const std::int64_t packetsSent = packetsFor(payload.sent);
    const std::int64_t acknowledgementsReceived = isTcp ? packetsSent / 2 : 0;
    const std::int64_t acknowledgementsSent = isTcp ? packetsReceived / 2 : 0;
    return {.received = payload.received + header * (packetsReceived + acknowledgementsReceived),
            .sent = payload.sent + header * (packetsSent + acknowledgementsSent)};
}

ByteCount difference(const ByteCount& now, const ByteCount& before) {
    return {.received = now.received - before.received, .sent = now.sent - before.sent};
}

}  // namespace

DemoLane::DemoLane(const DemoScene& scene, const DemoProfile& profile, const DemoFlow& flow,
                   std::shared_ptr<const ApplicationIdentity> application, std::uint32_t number, Moment begin)
    : m_Scene(scene),
      m_Profile(profile),
      m_Flow(flow),
      m_Application(std::move(application)),
      m_NextKey(std::uint64_t{number} << 32),
      m_Random(DemoRandom::seedFrom(DemoRandom::seedFrom(scene.seed, profile.path), number)) {
    const bool isInUse = demoIntensity(profile, begin, scene) > 0;
    plan(begin, isInUse ? seconds(0) : drawSeconds(flow.pause, demoStretch(flow, begin, scene)));
}

void DemoLane::advance(Moment now, std::vector<TrafficSample>& samples) {
    while (m_Connection && m_Connection->closes <= now) {
        const Moment closed = m_Connection->closes;
        report(closed, samples);
        plan(closed, drawSeconds(m_Flow.pause, demoStretch(m_Flow, closed, m_Scene)));
    }
    if (m_Connection && m_Connection->sample.opened <= now) {
        report(now, samples);
    }
}

Moment DemoLane::nextChange() const {
    if (!m_Connection) {
        return Moment::max();
    }
    return m_Connection->announced ? m_Connection->closes : m_Connection->sample.opened;
}

void DemoLane::plan(Moment from, seconds pause) {
    m_Connection.reset();
    const auto opening = demoOpening(m_Profile, from, pause, m_Scene);
    if (!opening) {
        return;
    }
    const Moment opened = *opening;
    const double vigour = demoIntensity(m_Profile, opened, m_Scene) * (0.1 + m_Random.exponential(0.9));
    const auto life = drawSeconds(m_Flow.life, demoStretch(m_Flow, opened, m_Scene));
    m_Connection.emplace(Connection{.sample = drawSample(opened),
                                    .closes = opened + life,
                                    .received = m_Flow.received * vigour,
                                    .sent = m_Flow.sent * vigour,
                                    .wave = DemoWave(m_Flow.swing, m_Random)});
}

TrafficSample DemoLane::drawSample(Moment opened) {
    const bool ipv6 = m_Random.uniform() < m_Flow.ipv6Share;
    const bool hasPorts = m_Flow.port != 0;
    const auto ephemeral = static_cast<std::uint16_t>(hasPorts ? 32768 + m_Random.below(28232) : 0);
    const bool serves = m_Flow.direction == Direction::Input;
    const std::uint16_t localPort = serves ? m_Flow.port : ephemeral;
    const std::uint16_t remotePort = serves ? ephemeral : m_Flow.port;
    // An application's peers have neighbouring numbers, which begin anywhere.
    const auto firstHost = static_cast<int>(DemoRandom::seedFrom(m_Flow.port, m_Profile.path) % 508);
    const int host = m_Random.below(m_Flow.hosts);
    TrafficSample sample;
    sample.connectionKey = m_NextKey++;
    sample.application = m_Application;
    sample.socketDomain = ipv6 ? AF_INET6 : AF_INET;
    sample.socketType = socketTypeOf(m_Flow.protocol);
    sample.socketProtocol = m_Flow.protocol;
    sample.direction = m_Flow.direction;
    sample.local = lanAddress(ipv6, thisMachine, localPort);
    sample.remote = m_Flow.inLan ? lanAddress(ipv6, thisMachine + 1 + host, remotePort)
                                 : worldAddress(ipv6, firstHost + host, remotePort);
    sample.opened = opened;
    return sample;
}

void DemoLane::report(Moment upTo, std::vector<TrafficSample>& samples) {
    Connection& connection = *m_Connection;
    const double seconds =
        connection.wave.progress(duration<double>(upTo - connection.sample.opened).count());
    // Rounding may make a nearly standing wave fall back by a byte.
    const ByteCount payload{
        std::max(static_cast<std::int64_t>(connection.received * seconds), connection.payload.received),
        std::max(static_cast<std::int64_t>(connection.sent * seconds), connection.payload.sent)};
    const ByteCount moved = withHeaders(payload, connection.sample);
    TrafficSample sample = connection.sample;
    sample.payload = difference(payload, std::exchange(connection.payload, payload));
    sample.moved = difference(moved, std::exchange(connection.moved, moved));
    sample.closed = upTo == connection.closes;
    if (!connection.announced || sample.closed || sample.moved != ByteCount{}) {
        connection.announced = true;
        samples.push_back(std::move(sample));
    }
}

std::chrono::seconds DemoLane::drawSeconds(seconds mean, double stretch) {
    const double drawn = m_Random.exponential(static_cast<double>(mean.count()) * stretch);
    return std::max(seconds(1), seconds(static_cast<std::int64_t>(drawn)));
}

}  // namespace service
