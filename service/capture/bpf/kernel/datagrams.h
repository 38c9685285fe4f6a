/* SPDX-License-Identifier: GPL-3.0-or-later */
/* UDP and everything else that is no TCP: a flow for each peer, the socket's first one in its storage. */
#pragma once

#define ICMP_ECHO_REPLY 0
#define ICMP_ECHO_REQUEST 8
#define ICMPV6_ECHO_REQUEST 128
#define ICMPV6_ECHO_REPLY 129

/** Of one socket between two readings of the tables: a scan from outside must not fill them. */
#define MAX_NEW_FLOWS 256

static __always_inline int is_echo_request(const struct packet* packet) {
    return (packet->protocol == IPPROTO_ICMP && packet->icmp_type == ICMP_ECHO_REQUEST) ||
           (packet->protocol == IPPROTO_ICMPV6 && packet->icmp_type == ICMPV6_ECHO_REQUEST);
}

static __always_inline int is_echo_reply(const struct packet* packet) {
    return (packet->protocol == IPPROTO_ICMP && packet->icmp_type == ICMP_ECHO_REPLY) ||
           (packet->protocol == IPPROTO_ICMPV6 && packet->icmp_type == ICMPV6_ECHO_REPLY);
}

/**
 * Whether a raw socket got a packet that is meant for it. It gets a copy of every packet of its protocol:
 * those of TCP and UDP are counted at their own sockets, and of ICMP's it wants the replies to what it asked;
 * the others are the kernel's.
 */
static __always_inline int is_meant_for(const struct socket_state* state, const struct packet* packet) {
    if (packet->protocol == IPPROTO_TCP || packet->protocol == IPPROTO_UDP) {
        return 0;
    }
    if (packet->protocol != IPPROTO_ICMP && packet->protocol != IPPROTO_ICMPV6) {
        return 1;
    }
    return is_echo_reply(packet) && state->has_echo && packet->echo == state->echo;
}

static __always_inline int same_peer(const struct flow* flow, const struct packet* packet) {
    const __u64* left = (const __u64*)flow->ends.remote;
    const __u64* right = (const __u64*)packet->ends.remote;
    return flow->ends.version == packet->ends.version && flow->ends.remote_port == packet->ends.remote_port &&
           left[0] == right[0] && left[1] == right[1];
}

/** The flow with the peer among those beside the storage; null when there is no room for another. */
static __noinline struct tracked_flow* flow_beside(struct socket_state* state,
                                                   const struct socket_facts* facts,
                                                   const struct packet* packet, __u8 direction) {
    struct flow_key key = {.socket = state->id,
                           .remote_port = packet->ends.remote_port,
                           .protocol = packet->protocol,
                           .version = packet->ends.version};
    __builtin_memcpy(key.remote, packet->ends.remote, sizeof(key.remote));
    struct tracked_flow* flow = bpf_map_lookup_elem(&flows, &key);
    if (flow || state->new_flows >= MAX_NEW_FLOWS) {
        return flow;
    }
    ++state->new_flows;
    struct tracked_flow fresh = {};
    fresh.flow.opened = bpf_ktime_get_boot_ns();
    fresh.flow.ends = packet->ends;
    begin_flow(&fresh.flow, state, facts, direction);
    bpf_map_update_elem(&flows, &key, &fresh, BPF_NOEXIST);
    return bpf_map_lookup_elem(&flows, &key);
}

/** Counts a packet for its peer's flow. */
static __always_inline void count_peer(struct socket_state* state, const struct socket_facts* facts,
                                       const struct packet* packet, const struct amount* amount,
                                       enum way way) {
    struct tracked_flow* flow = &state->flow;
    const __u8 direction = way == SENT ? DIRECTION_OUTPUT : DIRECTION_INPUT;
    if (state->kind != KIND_PACKET && take_place(&flow->flow)) {
        flow->flow.ends = packet->ends;
        begin_flow(&flow->flow, state, facts, direction);
    } else if (state->kind == KIND_PACKET || !same_peer(&flow->flow, packet)) {
        flow = flow_beside(state, facts, packet, direction);
        if (!flow) {
            LOSE(flows, 1);
            struct rest_key rest =
                rest_of(state->executable, facts->domain, facts->protocol, DIRECTION_UNDEFINED);
            count_rest(&rest, amount, way);
            return;
        }
        if (flow->flow.executable != state->executable || flow->flow.grade != state->grade) {
            const struct foreign none = {};
            change_hands(flow, state->executable, state->grade, &none);
        }
    }
    count(&flow->flow, way, amount);
}

static __noinline int count_any_datagram(struct __sk_buff* skb, struct socket_state* state, enum way way) {
    struct bpf_sock* sk = full_socket(skb);
    struct packet packet = {};
    if (!sk || !read_packet(skb, read_from_cgroup_skb, way, &packet)) {
        LOSE(packets, 1);
        return 0;
    }
    if (state->kind == KIND_RAW && way == RECEIVED && !is_meant_for(state, &packet)) {
        return 0;
    }
    if (state->kind == KIND_RAW && way == SENT && is_echo_request(&packet)) {
        state->echo = packet.echo;
        state->has_echo = 1;
    }
    struct amount amount = amount_of(skb, packet.headers);
    amount.wire += fragment_overhead(skb, &packet, way);
    struct socket_facts facts = {.type = sk->type, .domain = sk->family, .protocol = packet.protocol};
    count_peer(state, &facts, &packet, &amount, way);
    return 0;
}

/**
 * Bytes of the headers of a UDP packet without options to or from the peer of the flow in place; else 0.
 */
static __always_inline __u32 headers_in_place(struct __sk_buff* skb, const struct endpoints* ends,
                                              enum way way) {
    const __u8* data = (void*)(long)skb->data;
    const __u8* end = (void*)(long)skb->data_end;
    const __u32 behind_source = way == SENT ? 1 : 0;  // where the peer's address and port stand
    const __u64* peer = (const __u64*)ends->remote;
    if (data + IPV4_BYTES + UDP_BYTES > end) {
        return 0;
    }
    if (data[0] == 0x45) {  // version 4, five words
        const __u32* address = (const __u32*)(data + 12) + behind_source;
        const __be16* port = (const __be16*)(data + IPV4_BYTES) + behind_source;
        return data[9] == IPPROTO_UDP && *address == *(const __u32*)peer &&
                       bpf_ntohs(*port) == ends->remote_port && ends->version == 4
                   ? IPV4_BYTES + UDP_BYTES
                   : 0;
    }
    if (data + IPV6_BYTES + UDP_BYTES > end || data[0] >> 4 != 6 || data[6] != IPPROTO_UDP) {
        return 0;
    }
    const __u64* address = (const __u64*)(data + 8) + 2 * behind_source;
    const __be16* port = (const __be16*)(data + IPV6_BYTES) + behind_source;
    return address[0] == peer[0] && address[1] == peer[1] && bpf_ntohs(*port) == ends->remote_port &&
                   ends->version == 6
               ? IPV6_BYTES + UDP_BYTES
               : 0;
}

static __always_inline void count_datagram(struct __sk_buff* skb, struct socket_state* state, enum way way) {
    struct flow* flow = &state->flow.flow;
    __u32 length = skb->len;
    __u32 headers = length <= SMALLEST_MTU && state->kind == KIND_DATAGRAM && !skb->gso_size
                        ? headers_in_place(skb, &flow->ends, way)
                        : 0;
    if (LIKELY(headers && flow->id)) {
        struct amount amount = {.wire = length, .payload = length - headers};
        count(flow, way, &amount);
    } else {
        count_any_datagram(skb, state, way);
    }
}

/** The kernel's own packets. */
static __noinline int count_control(struct __sk_buff* skb, enum way way) {
    struct bpf_sock* sk = full_socket(skb);
    struct packet packet = {};
    if (!sk || !read_packet(skb, read_from_cgroup_skb, way, &packet)) {
        LOSE(packets, 1);
        return 0;
    }
    struct amount amount = amount_of(skb, packet.headers);
    amount.wire += fragment_overhead(skb, &packet, way);
    if (packet.protocol == IPPROTO_TCP) {
        struct sock* address = kernel_address(sk);  // it speaks for sockets that are gone, as in TIME_WAIT
        return count_late_or_kernels(&packet, BPF_CORE_READ(address, __sk_common.skc_net.net, ns.inum),
                                     &amount, way);
    }
    count_kernels(sk->family, packet.protocol, &amount, way);
    return 0;
}

SEC("cgroup/sock_release")
int on_release(struct bpf_sock* sk) {
    struct socket_state* state = bpf_sk_storage_get(&sockets, sk, 0, 0);
    if (!state) {
        return 1;
    }
    if (state->grade != OWNER_SURE) {
        note_heir(state, kernel_address(sk));  // accepted or inherited, and closed without a byte
    }
    if (state->kind == KIND_DATAGRAM || state->kind == KIND_RAW) {
        end_flow(state, kernel_address(sk));
    }
    return 1;
}
