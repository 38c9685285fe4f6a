/* SPDX-License-Identifier: GPL-3.0-or-later */
/*
 * Packets that pass the control groups by: those for sockets that are gone or in TIME_WAIT, those for no
 * socket at all, and those of packet sockets, which enter below IP.
 */
#pragma once

static __always_inline int is_ip(__be16 protocol) {
    return protocol == bpf_htons(ETH_P_IP) || protocol == bpf_htons(ETH_P_IPV6);
}

/** Reads a packet that has no control group's view; 0 when it is no IP packet. */
static __always_inline int read_stray(const struct sk_buff* buffer, enum way way, struct packet* packet,
                                      __u32* length) {
    unsigned char* header = buffer->head + buffer->network_header;
    *length = buffer->len - (__u32)(header - buffer->data);
    return read_packet(header, read_from_buffer, way, packet);
}

static __always_inline struct amount stray_amount(const struct packet* packet, __u32 length) {
    struct amount amount = {
        .wire = length,
        .payload = length > packet->headers ? length - packet->headers : 0,
    };
    return amount;
}

static __always_inline int is_icmp(const struct packet* packet) {
    return packet->protocol == IPPROTO_ICMP || packet->protocol == IPPROTO_ICMPV6;
}

static __always_inline int is_for_nobody(enum skb_drop_reason reason) {
    return reason == bpf_core_enum_value(enum skb_drop_reason, SKB_DROP_REASON_NO_SOCKET);
}

/**
 * A packet that came in and that no socket took. ICMP is left out: a reply that no ping socket takes may well
 * have been for a raw one.
 */
static __always_inline int count_dropped(struct sk_buff* buffer, int only_lingering) {
    struct packet packet = {};
    __u32 length = 0;
    if (!is_ip(buffer->protocol) || !read_stray(buffer, RECEIVED, &packet, &length) || is_icmp(&packet)) {
        return 0;
    }
    const __u32 netns = BPF_CORE_READ(buffer, dev, nd_net.net, ns.inum);
    struct amount amount = stray_amount(&packet, length);
    if (only_lingering) {
        struct past* past = find_past(&packet, netns);
        if (!past || !past->lingers) {
            return 0;
        }
    }
    return count_late_or_kernels(&packet, netns, &amount, RECEIVED);
}

SEC("tp_btf/kfree_skb")
int BPF_PROG(on_drop, struct sk_buff* buffer, void* location, enum skb_drop_reason reason,
             struct sock* receiver) {
    const int for_past = receiver && BPF_CORE_READ(receiver, __sk_common.skc_state) == TCP_TIME_WAIT;
    const int for_nobody = !receiver && is_for_nobody(reason);
    return for_past || for_nobody ? count_dropped(buffer, 0)
                                  : 0;  // others were counted on their way to a socket
}

/**
 * For kernels before 6.11, which do not tell who a packet was for: in TIME_WAIT it is dropped without a
 * reason.
 */
SEC("tp_btf/kfree_skb")
int BPF_PROG(on_untold_drop, struct sk_buff* buffer, void* location, enum skb_drop_reason reason) {
    const int without_reason =
        reason == bpf_core_enum_value(enum skb_drop_reason, SKB_DROP_REASON_NOT_SPECIFIED);
    return without_reason || is_for_nobody(reason) ? count_dropped(buffer, without_reason) : 0;
}

/** What the kernel says to other kernels, and to routers. */
static __always_inline int is_control(const struct packet* packet) {
    return is_icmp(packet) || packet->protocol == IPPROTO_IGMP;
}

/** Lets a program look at memory as it looks at the kernel's types: for the price of a load, not of a call. */
extern void* bpf_rdonly_cast(void* memory, __u32 type) __ksym __weak;

/** What the IP header says comes next, of a packet of IPv4 or IPv6. */
static __always_inline __u8 next_protocol(const struct sk_buff* buffer, int is_ipv4) {
    unsigned char* header = buffer->head + buffer->network_header;
    if (!bpf_rdonly_cast) {  // kernels before 6.2
        __u8 protocol = 0;
        bpf_probe_read_kernel(&protocol, sizeof(protocol), header + (is_ipv4 ? 9 : 6));
        return protocol;
    }
    if (is_ipv4) {
        struct iphdr* ipv4 = bpf_rdonly_cast(header, bpf_core_type_id_kernel(struct iphdr));
        return ipv4->protocol;
    }
    struct ipv6hdr* ipv6 = bpf_rdonly_cast(header, bpf_core_type_id_kernel(struct ipv6hdr));
    return ipv6->nexthdr;
}

/** By its first header's look alone: most packets are of no interest, and this is cheap. */
static __always_inline int may_be_control(const struct sk_buff* buffer) {
    const int is_ipv4 = buffer->protocol == bpf_htons(ETH_P_IP);
    const __u8 protocol = next_protocol(buffer, is_ipv4);
    return is_ipv4 ? protocol == IPPROTO_ICMP || protocol == IPPROTO_IGMP
                   : protocol == IPPROTO_ICMPV6 || is_extension(protocol);
}

/** What the kernel has done with: among it are the ICMP and IGMP messages that it takes itself. */
SEC("tp_btf/consume_skb")
int BPF_PROG(on_consume, struct sk_buff* buffer) {
    // What is sent has a socket, and what is forwarded did not come from the device that it is at now.
    if (buffer->sk || !buffer->skb_iif || !is_ip(buffer->protocol) || !may_be_control(buffer)) {
        return 0;
    }
    struct packet packet = {};
    __u32 length = 0;
    if (buffer->skb_iif != BPF_CORE_READ(buffer, dev, ifindex) ||
        !read_stray(buffer, RECEIVED, &packet, &length) || !is_control(&packet) || is_echo_reply(&packet)) {
        return 0;
    }
    struct amount amount = stray_amount(&packet, length);
    count_kernels(domain_of(&packet), packet.protocol, &amount, RECEIVED);
    return 0;
}

/** Bytes in front of the IP header; of 64 bits, because the verifier takes no shorter ones for addresses. */
static __always_inline __u64 link_header(const struct sk_buff* buffer) {
    return buffer->head + buffer->network_header - buffer->data;
}

/**
 * Whether a packet's IP header lies in pages that no program gets to read, as in a packet socket's ring of frames to
 * send. To whom such a frame goes, and with what payload, nobody knows.
 */
static __always_inline int has_hidden_header(const struct sk_buff* buffer) {
    return buffer->len - buffer->data_len < link_header(buffer) + IPV4_BYTES;
}

static __always_inline void count_frame(const struct packet* packet, struct sock* sk,
                                        const struct amount* amount) {
    struct socket_state* state = state_of(sk);
    if (!state) {
        LOSE(sockets, 1);
        LOSE(bytes, amount->wire);
        return;
    }
    if (state->grade == OWNER_UNKNOWN) {
        note_heir(state, sk);  // it runs in the sender's context, unless the device's queue was full
    }
    if (!packet->ends.version) {
        struct rest_key rest = rest_of(state->executable, AF_INET, 0, DIRECTION_UNDEFINED);
        count_rest(&rest, amount, SENT);
        return;
    }
    struct socket_facts facts = {.type = SOCK_RAW, .domain = domain_of(packet), .protocol = packet->protocol};
    count_peer(state, &facts, packet, amount, SENT);
}

/** Whether a device hands on to another one, where the same packet shows again. */
static __always_inline int is_stacked(const struct net_device* device) {
    struct list_head* lower = (void*)&device->adj_list.lower;
    return lower->next != lower;
}

/**
 * Whether a packet has no socket that counts: an acknowledgement from TIME_WAIT, or maybe an IPv6 reset or a report of
 * membership in a multicast group.
 */
static __always_inline int has_no_socket(const struct sk_buff* buffer, struct sock* sk) {
    // What another machine sent and this one forwards has no socket either, but a device that it came from.
    return sk ? sk->__sk_common.skc_state == TCP_TIME_WAIT : buffer->skb_iif == 0;
}

/** Every packet that leaves: of interest are those that passed the control groups by. */
SEC("tp_btf/net_dev_start_xmit")
int BPF_PROG(on_transmit, const struct sk_buff* buffer, const struct net_device* device) {
    struct sock* sk = buffer->sk;
    const int from_packet_socket = sk && sk->__sk_common.skc_family == AF_PACKET;
    if ((!from_packet_socket && !has_no_socket(buffer, sk)) || !is_ip(buffer->protocol) ||
        is_stacked(device)) {
        return 0;
    }
    struct packet packet = {};
    __u32 length = 0;
    const int is_known = !has_hidden_header(buffer) && read_stray(buffer, SENT, &packet, &length);
    if (!is_known && !from_packet_socket) {
        return 0;
    }
    struct amount amount = {.wire = buffer->len - link_header(buffer)};
    if (is_known) {
        amount = stray_amount(&packet, length);
    }
    if (from_packet_socket) {
        count_frame(&packet, sk, &amount);
    } else if (!sk && is_control(&packet)) {
        count_kernels(domain_of(&packet), packet.protocol, &amount, SENT);
    } else if (packet.protocol == IPPROTO_TCP &&
               (sk || (packet.ends.version == 6 && packet.tcp_flags & TCP_FLAG_RST))) {
        count_late_or_kernels(&packet, BPF_CORE_READ(device, nd_net.net, ns.inum), &amount, SENT);
    }
    return 0;
}
