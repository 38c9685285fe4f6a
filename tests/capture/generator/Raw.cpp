// SPDX-License-Identifier: GPL-3.0-or-later
// What goes past the transports: pings, made-up packets, floods.

#include <arpa/inet.h>
#include <linux/if_packet.h>
#include <net/ethernet.h>
#include <net/if.h>
#include <netinet/icmp6.h>
#include <netinet/ip.h>
#include <netinet/ip_icmp.h>
#include <netinet/tcp.h>
#include <netinet/udp.h>
#include <poll.h>
#include <sys/mman.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <random>

#include "tests/capture/generator/Generator.h"

namespace traffic {

namespace {

std::uint16_t checksum(const void* data, std::size_t size, std::uint32_t sum = 0) {
    const auto* const bytes = static_cast<const unsigned char*>(data);
    for (std::size_t i = 0; i < size; ++i) {
        sum += i % 2 == 0 ? bytes[i] << 8 : bytes[i];
    }
    while (sum > 0xffff) {
        sum = (sum & 0xffff) + (sum >> 16);
    }
    return htons(static_cast<std::uint16_t>(~sum));
}

iphdr makeIpHeader(std::size_t size, std::uint8_t protocol, in_addr_t from, in_addr_t to) {
    iphdr header{};
    header.version = 4;
    header.ihl = 5;
    header.tot_len = htons(static_cast<std::uint16_t>(size));
    header.ttl = 64;
    header.protocol = protocol;
    header.saddr = from;
    header.daddr = to;
    header.check = checksum(&header, sizeof header);
    return header;
}

template <class Part>
void append(std::string& packet, const Part& part) {
    packet.append(reinterpret_cast<const char*>(&part), sizeof part);
}

in_addr_t addressOf(const Arguments& arguments, const char* key) {
    return reinterpret_cast<const sockaddr_in*>(Endpoint::of(arguments.text(key), 0).get())->sin_addr.s_addr;
}

/** Waits for the reply to our own ping `sequence`; false when it got lost. */
bool hasReply(int socket, bool isRaw, int family, std::uint16_t sequence) {
    const int expected = family == AF_INET ? int{ICMP_ECHOREPLY} : int{ICMP6_ECHO_REPLY};
    std::array<char, 65536> received;
    while (::recv(socket, received.data(), received.size(), 0) > 0) {
        icmphdr header;  // of the same layout in ICMPv6
        std::memcpy(&header, received.data() + (isRaw && family == AF_INET ? sizeof(iphdr) : 0),
                    sizeof header);
        // A raw socket also gets what answers others.
        const bool isMine = !isRaw || header.un.echo.id == htons(static_cast<std::uint16_t>(::getpid()));
        if (isMine && header.type == expected && header.un.echo.sequence == sequence) {
            return true;
        }
    }
    return false;
}

}  // namespace

/** "count" echo requests with "size" bytes behind their headers, through a raw socket or a "datagram" one. */
void ping(const Arguments& arguments) {
    const Endpoint peer = Endpoint::of(arguments.text("address"), 0);
    const bool isV4 = peer.family() == AF_INET;
    const bool isRaw = !arguments.number("datagram");
    const int socket = check(::socket(peer.family(), isRaw ? SOCK_RAW : SOCK_DGRAM,
                                      isV4 ? int{IPPROTO_ICMP} : int{IPPROTO_ICMPV6}),
                             "socket");
    setOption(socket, SOL_SOCKET, SO_RCVBUFFORCE, 4 << 20, "SO_RCVBUFFORCE");  // room for what answers others
    const timeval patience{5, 0};
    check(::setsockopt(socket, SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof patience), "SO_RCVTIMEO");
    const std::uint64_t size = arguments.number("size", 1000);
    Tally tally;
    for (std::uint64_t i = 1; i <= arguments.number("count", 100); ++i) {
        icmphdr header{};
        header.type = static_cast<std::uint8_t>(isV4 ? ICMP_ECHO : ICMP6_ECHO_REQUEST);
        header.un.echo.id = htons(static_cast<std::uint16_t>(::getpid()));
        header.un.echo.sequence = htons(static_cast<std::uint16_t>(i));
        std::string packet;
        append(packet, header);
        packet.append(size, 'p');
        header.checksum = isV4 ? checksum(packet.data(), packet.size()) : 0;  // the kernel's with ICMPv6
        std::memcpy(packet.data(), &header, sizeof header);
        check(::sendto(socket, packet.data(), packet.size(), 0, peer.get(), peer.size), "ping");
        tally.sent += size;
        tally.received += hasReply(socket, isRaw, peer.family(), header.un.echo.sequence) ? size : 0;
        ::usleep(static_cast<useconds_t>(arguments.number("pause")));
    }
    report(tally);
}

namespace {

/** Sends `packet` so many times from memory that it shares with the kernel, a frame at a time. */
void sendFromRing(int socket, const sockaddr_ll& station, const std::string& packet, std::uint64_t count) {
    tpacket_req layout{.tp_block_size = 4096, .tp_block_nr = 1, .tp_frame_size = 2048, .tp_frame_nr = 2};
    check(::setsockopt(socket, SOL_PACKET, PACKET_TX_RING, &layout, sizeof layout), "PACKET_TX_RING");
    void* const memory = ::mmap(nullptr, layout.tp_block_size, PROT_READ | PROT_WRITE, MAP_SHARED, socket, 0);
    check(memory == MAP_FAILED ? -1 : 0, "mmap of a packet ring");
    for (std::uint64_t i = 0; i < count; ++i) {
        char* const frame = static_cast<char*>(memory) + i % layout.tp_frame_nr * layout.tp_frame_size;
        packet.copy(frame + TPACKET_HDRLEN - sizeof(sockaddr_ll), packet.size());
        auto* const header = reinterpret_cast<tpacket_hdr*>(frame);
        header->tp_len = static_cast<unsigned>(packet.size());
        header->tp_status = TP_STATUS_SEND_REQUEST;
        check(::sendto(socket, nullptr, 0, 0, reinterpret_cast<const sockaddr*>(&station), sizeof station),
              "send a ring's frame");
    }
}

}  // namespace

/**
 * "count" frames to the station "ether" behind "interface", with UDP of "size" bytes in them that the kernel's own
 * layers never see. "cooked": the kernel makes the frames' headers. "ring": they lie in memory that it shares.
 */
void packetSender(const Arguments& arguments) {
    const std::uint64_t size = arguments.number("size", 1000);
    sockaddr_ll station{};
    station.sll_family = AF_PACKET;
    station.sll_protocol = htons(ETH_P_IP);
    station.sll_ifindex = static_cast<int>(::if_nametoindex(arguments.text("interface").c_str()));
    station.sll_halen = ETH_ALEN;
    unsigned char* const ether = station.sll_addr;
    std::sscanf(arguments.text("ether").c_str(), "%hhx:%hhx:%hhx:%hhx:%hhx:%hhx", ether, ether + 1, ether + 2,
                ether + 3, ether + 4, ether + 5);
    const bool isCooked = arguments.number("cooked") != 0;

    udphdr udp{};
    udp.source = htons(4000);
    udp.dest = htons(static_cast<std::uint16_t>(arguments.number("port")));
    udp.len = htons(static_cast<std::uint16_t>(sizeof udp + size));
    ether_header frame{};
    std::memcpy(frame.ether_dhost, ether, ETH_ALEN);
    frame.ether_type = htons(ETH_P_IP);
    std::string packet;
    if (!isCooked) {
        append(packet, frame);
    }
    append(packet, makeIpHeader(sizeof(iphdr) + sizeof udp + size, IPPROTO_UDP, addressOf(arguments, "from"),
                                addressOf(arguments, "address")));
    append(packet, udp);
    packet.append(size, '\0');

    const int socket = check(::socket(AF_PACKET, isCooked ? SOCK_DGRAM : SOCK_RAW, 0), "socket");
    const std::uint64_t count = arguments.number("count", 100);
    if (arguments.number("ring")) {
        sendFromRing(socket, station, packet, count);
        report({0, count * size});
        return;
    }
    Tally tally;
    for (std::uint64_t i = 0; i < count; ++i) {
        check(::sendto(socket, packet.data(), packet.size(), 0, reinterpret_cast<const sockaddr*>(&station),
                       sizeof station),
              "send a frame");
        tally.sent += size;
    }
    report(tally);
}

/** "count" openings of connections to "port", each from another address and port of 10.66.0.0/16. */
void synFlood(const Arguments& arguments) {
    const int socket = check(::socket(AF_INET, SOCK_RAW, IPPROTO_RAW), "socket");
    Endpoint peer = Endpoint::of(arguments.text("address"), 0);
    const in_addr_t to = addressOf(arguments, "address");
    std::mt19937 random(1);
    for (std::uint64_t i = 0; i < arguments.number("count"); ++i) {
        const in_addr_t from = htonl(0x0a420000 | (random() & 0xffff));
        tcphdr tcp{};
        tcp.source = htons(static_cast<std::uint16_t>(1024 + random() % 60000));
        tcp.dest = htons(static_cast<std::uint16_t>(arguments.number("port")));
        tcp.seq = static_cast<std::uint32_t>(random());
        tcp.doff = sizeof tcp / 4;
        tcp.syn = 1;
        tcp.window = htons(1024);
        std::string pseudo;  // what the checksum covers besides
        append(pseudo, from);
        append(pseudo, to);
        append(pseudo, htons(IPPROTO_TCP));
        append(pseudo, htons(sizeof tcp));
        append(pseudo, tcp);
        tcp.check = checksum(pseudo.data(), pseudo.size());
        std::string packet;
        append(packet, makeIpHeader(sizeof(iphdr) + sizeof tcp, IPPROTO_TCP, from, to));
        append(packet, tcp);
        check(::sendto(socket, packet.data(), packet.size(), 0, peer.get(), peer.size), "flood");
    }
    report({});
}

/** Knocks at "count" ports from "port" on, where nobody listens. */
void portScan(const Arguments& arguments) {
    for (std::uint64_t i = 0; i < arguments.number("count"); ++i) {
        const Endpoint peer = Endpoint::of(arguments.text("address"), arguments.number("port") + i);
        const int socket = check(::socket(peer.family(), SOCK_STREAM, 0), "socket");
        if (::connect(socket, peer.get(), peer.size) == 0 || errno != ECONNREFUSED) {
            die("knock");
        }
        ::close(socket);
    }
    report({});
}

}  // namespace traffic
