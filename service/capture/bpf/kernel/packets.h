/* SPDX-License-Identifier: GPL-3.0-or-later */
/* What a packet is: its headers, its ends, its bytes. Offsets count from the IP header. */
#pragma once

#define AF_INET 2
#define AF_INET6 10
#define AF_PACKET 17

#define SOCK_STREAM 1
#define SOCK_RAW 3
#define MSG_PEEK 2

#define IPPROTO_HOPOPTS 0
#define IPPROTO_ICMP 1
#define IPPROTO_IGMP 2
#define IPPROTO_TCP 6
#define IPPROTO_UDP 17
#define IPPROTO_ROUTING 43
#define IPPROTO_FRAGMENT 44
#define IPPROTO_AH 51
#define IPPROTO_ICMPV6 58
#define IPPROTO_DSTOPTS 60
#define IPPROTO_SCTP 132
#define IPPROTO_UDPLITE 136
#define IPPROTO_MPTCP 262

#define IPV4_BYTES 20
#define IPV6_BYTES 40
#define UDP_BYTES 8
#define SCTP_BYTES 12
#define ICMP_BYTES 8
#define FRAGMENT_HEADER_BYTES 8

/** More than any sender makes: RFC 8200 knows six kinds, one of which may stand twice. */
#define MAX_EXTENSIONS 7

#define TCP_FLAG_RST 0x04

enum way { RECEIVED, SENT };

struct packet {
    struct endpoints ends;
    __u32 headers;   /* bytes of IP and transport headers */
    __u16 transport; /* where the transport header begins */
    __u8 protocol;
    __u8 icmp_type;
    __u8 tcp_flags;
    __u16 echo; /* identifier of an ICMP echo, network order */
};

/** Reads bytes of a packet; 0 when they are there. Where the packet is differs between the hooks. */
typedef long (*packet_reader)(void* from, __u32 offset, void* to, __u32 length);

static __always_inline __u16 port_at(const __u8* bytes) {
    return bytes[0] << 8 | bytes[1];
}

static __always_inline int read_ipv4(void* from, packet_reader read, enum way way, struct packet* packet) {
    __u8 header[IPV4_BYTES];
    if (read(from, 0, header, sizeof(header))) {
        return 0;
    }
    packet->transport = (header[0] & 15) * 4;
    packet->protocol = header[9];
    __builtin_memcpy(way == SENT ? packet->ends.local : packet->ends.remote, header + 12, 4);
    __builtin_memcpy(way == SENT ? packet->ends.remote : packet->ends.local, header + 16, 4);
    return packet->transport >= IPV4_BYTES;
}

static __always_inline int is_extension(__u8 protocol) {
    return protocol == IPPROTO_HOPOPTS || protocol == IPPROTO_ROUTING || protocol == IPPROTO_FRAGMENT ||
           protocol == IPPROTO_DSTOPTS || protocol == IPPROTO_AH;
}

static __always_inline int read_ipv6(void* from, packet_reader read, enum way way, struct packet* packet) {
    __u8 header[IPV6_BYTES];
    if (read(from, 0, header, sizeof(header))) {
        return 0;
    }
    packet->transport = IPV6_BYTES;
    packet->protocol = header[6];
    __builtin_memcpy(way == SENT ? packet->ends.local : packet->ends.remote, header + 8, 16);
    __builtin_memcpy(way == SENT ? packet->ends.remote : packet->ends.local, header + 24, 16);
    for (int i = 0; i < MAX_EXTENSIONS && is_extension(packet->protocol); ++i) {
        __u8 extension[2];
        if (read(from, packet->transport, extension, sizeof(extension))) {
            return 0;
        }
        packet->transport += packet->protocol == IPPROTO_FRAGMENT ? FRAGMENT_HEADER_BYTES
                             : packet->protocol == IPPROTO_AH     ? (extension[1] + 2) * 4
                                                                  : (extension[1] + 1) * 8;
        packet->protocol = extension[0];
    }
    return 1;
}

static __always_inline void read_ports(void* from, packet_reader read, enum way way, struct packet* packet) {
    __u8 ports[4];
    if (read(from, packet->transport, ports, sizeof(ports))) {
        return;
    }
    packet->ends.local_port = port_at(way == SENT ? ports : ports + 2);
    packet->ends.remote_port = port_at(way == SENT ? ports + 2 : ports);
}

/** Reads what is behind the IP headers and returns its length. */
static __always_inline __u32 read_transport(void* from, packet_reader read, enum way way,
                                            struct packet* packet) {
    __u8 icmp[6];
    __u8 tcp[2] = {};
    switch (packet->protocol) {
        case IPPROTO_TCP:
            read_ports(from, read, way, packet);
            read(from, packet->transport + 12, tcp, sizeof(tcp));
            packet->tcp_flags = tcp[1];
            return (tcp[0] >> 4) * 4;
        case IPPROTO_SCTP:
            read_ports(from, read, way, packet);
            return SCTP_BYTES;
        case IPPROTO_UDP:
        case IPPROTO_UDPLITE:
            read_ports(from, read, way, packet);
            return UDP_BYTES;
        case IPPROTO_ICMP:
        case IPPROTO_ICMPV6:
            if (!read(from, packet->transport, icmp, sizeof(icmp))) {
                packet->icmp_type = icmp[0];
                __builtin_memcpy(&packet->echo, icmp + 4, 2);
            }
            return ICMP_BYTES;
    }
    return 0;
}

/** Fills `packet`; 0 when it is no IP packet. */
static __always_inline int read_packet(void* from, packet_reader read, enum way way, struct packet* packet) {
    __u8 first = 0;
    read(from, 0, &first, 1);
    packet->ends.version = first >> 4;
    int known = packet->ends.version == 4   ? read_ipv4(from, read, way, packet)
                : packet->ends.version == 6 ? read_ipv6(from, read, way, packet)
                                            : 0;
    if (!known) {
        return 0;
    }
    packet->headers = packet->transport + read_transport(from, read, way, packet);
    return 1;
}

/** Where the verifier lets one look into a packet directly; headers end well before. */
#define MAX_DIRECT_OFFSET 1023

static __always_inline long read_from_cgroup_skb(void* from, __u32 offset, void* to, __u32 length) {
    struct __sk_buff* skb = from;
    const void* place = (void*)(long)skb->data + (offset & MAX_DIRECT_OFFSET);
    if (offset <= MAX_DIRECT_OFFSET && place + length <= (void*)(long)skb->data_end) {
        __builtin_memcpy(to, place, length);
        return 0;
    }
    return bpf_skb_load_bytes(skb, offset, to, length);
}

static __always_inline long read_from_buffer(void* from, __u32 offset, void* to, __u32 length) {
    return bpf_probe_read_kernel(to, length, from + offset);
}

/** In how many pieces that each carry the same headers a packet crosses the wire. */
static __always_inline __u32 segments_of(struct __sk_buff* skb, __u32 payload) {
    __u32 segments = skb->gso_segs;
    __u32 size = segments ? 0 : skb->gso_size;  // a guest's packets tell their pieces' size alone
    if (size) {
        segments = (payload + size - 1) / size;
    }
    return segments ? segments : 1;
}

/** Bytes of the headers that the pieces of a packet carry beyond its own. */
static __always_inline __u32 repeated_headers(struct __sk_buff* skb, __u32 headers) {
    __u32 length = skb->len;
    __u32 segments = segments_of(skb, length > headers ? length - headers : 0);
    return (segments - 1) * headers;
}

static __always_inline struct amount amount_of(struct __sk_buff* skb, __u32 headers) {
    __u32 length = skb->len;
    struct amount amount = {
        .wire = length + repeated_headers(skb, headers),
        .payload = length > headers ? length - headers : 0,
    };
    return amount;
}

/** What every host takes in one piece (RFC 791): looking for fragments of less is not worth its time. */
#define SMALLEST_MTU 576

/**
 * The largest piece, header and all, that a datagram was or will be cut into; 0 when it is whole. What comes
 * in was put together before it gets here, and the kernel has noted this; what leaves is cut afterwards, to
 * the device's MTU.
 */
static __always_inline __u32 largest_fragment(struct __sk_buff* skb, __u32 version, enum way way) {
    struct sk_buff* buffer = (void*)skb;
    __u16 noted = 0;
    if (way == SENT) {
        return BPF_CORE_READ(buffer, dev, mtu);
    }
    void* notes = (void*)buffer + bpf_core_field_offset(struct sk_buff, cb);
    void* field = version == 4 ? notes + bpf_core_field_offset(struct inet_skb_parm, frag_max_size)
                               : notes + bpf_core_field_offset(struct inet6_skb_parm, frag_max_size);
    bpf_probe_read_kernel(&noted, sizeof(noted), field);
    return noted;
}

/**
 * Bytes of the headers that all fragments but the first have of their own, and of the IPv6 fragment headers.
 */
static __always_inline __u32 fragment_overhead(struct __sk_buff* skb, const struct packet* packet,
                                               enum way way) {
    __u32 length = skb->len;
    if (length <= SMALLEST_MTU || packet->protocol == IPPROTO_TCP || skb->gso_size) {
        return 0;
    }
    __u32 piece = largest_fragment(skb, packet->ends.version, way);
    __u32 header = packet->ends.version == 4 ? IPV4_BYTES : IPV6_BYTES + FRAGMENT_HEADER_BYTES;
    if (piece < header + 8 || length <= piece) {
        return 0;
    }
    __u32 room = (piece - header) & ~7u;  // offsets of fragments count in units of eight bytes
    __u32 whole = length - (packet->ends.version == 4 ? IPV4_BYTES : IPV6_BYTES);
    __u32 fragments = (whole + room - 1) / room;
    return packet->ends.version == 4 ? (fragments - 1) * IPV4_BYTES
                                     : fragments * FRAGMENT_HEADER_BYTES + (fragments - 1) * IPV6_BYTES;
}
