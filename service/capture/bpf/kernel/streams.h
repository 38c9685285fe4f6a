/* SPDX-License-Identifier: GPL-3.0-or-later */
/* TCP: the packets of connections and of listeners, and the states that a connection goes through. */
#pragma once

#define TCP_SYN_SENT 2
#define TCP_FIN_WAIT1 4
#define TCP_FIN_WAIT2 5
#define TCP_TIME_WAIT 6
#define TCP_CLOSE 7
#define TCP_LISTEN 10
#define TCP_CLOSING 11

#define TCP_BYTES 20

/** Bytes of IP and TCP headers where they stand as they nearly always do; else 0. */
static __always_inline __u32 plain_stream_headers(struct __sk_buff* skb) {
    const __u8* data = (void*)(long)skb->data;
    const __u8* end = (void*)(long)skb->data_end;
    if (data + IPV4_BYTES + TCP_BYTES > end) {
        return 0;
    }
    if (data[0] == 0x45) {  // version 4, five words
        return IPV4_BYTES + (data[IPV4_BYTES + 12] >> 4) * 4;
    }
    if (data[0] >> 4 != 6 || data[6] != IPPROTO_TCP || data + IPV6_BYTES + TCP_BYTES > end) {
        return 0;
    }
    return IPV6_BYTES + (data[IPV6_BYTES + 12] >> 4) * 4;
}

/** The same for any packet. */
static __noinline __u32 stream_headers(struct __sk_buff* skb) {
    __u32 headers = plain_stream_headers(skb);
    struct packet packet = {};
    if (!headers && read_packet(skb, read_from_cgroup_skb, SENT, &packet)) {
        headers = packet.headers;
    }
    return headers;
}

/** A socket that a listener begot has its storage, which makes it its own now. */
static __always_inline void leave_listener(struct socket_state* state) {
    state->parent = state->id;
    state->id = new_id();
    state->kind = KIND_STREAM;
    state->direction = DIRECTION_INPUT;
    state->is_new = 1;
    state->grade = state->grade > OWNER_LIKELY ? OWNER_LIKELY : state->grade;
}

/**
 * Whether a packet was counted at the listener already. Of two packets that end a handshake at once the kernel shows
 * both to the listener, makes the connection with the faster one, and then shows the slower one to that as well.
 */
static __noinline int was_at_listener(struct __sk_buff* skb, const struct handshake* handshake) {
    struct packet packet = {};
    const __u64 place = (__u64)kernel_address(skb);
    if (!handshake || (handshake->seen[0].place != place && handshake->seen[1].place != place)) {
        return 0;
    }
    const struct seen_packet* seen = &handshake->seen[handshake->seen[0].place != place];
    return seen->length == skb->len && read_packet(skb, read_from_cgroup_skb, RECEIVED, &packet) &&
           seen->flags == packet.tcp_flags;
}

static __always_inline void take_handshake(struct __sk_buff* skb, struct socket_state* state,
                                           struct flow* flow, enum way way) {
    struct handshake_key key = {.listener = state->parent, .remote_port = flow->ends.remote_port};
    __builtin_memcpy(key.local, flow->ends.local, sizeof(key.local));
    __builtin_memcpy(key.remote, flow->ends.remote, sizeof(key.remote));
    state->parent = 0;
    struct handshake* found = bpf_map_lookup_elem(&handshakes, &key);
    if (!found) {
        return;
    }
    struct amount received = take(&found->received);
    struct amount sent = take(&found->sent);
    flow->opened = found->opened;
    if (way == RECEIVED && received.wire >= skb->len && was_at_listener(skb, found)) {
        received.wire -= skb->len;
    }
    bpf_map_delete_elem(&handshakes, &key);
    __sync_fetch_and_add(&flow->received.wire, received.wire);
    __sync_fetch_and_add(&flow->sent.wire, sent.wire);
}

/** The socket's own ends: address translation may have changed the packet's. */
static __always_inline void ends_of(struct bpf_sock* sk, __u32 version, struct endpoints* ends) {
    ends->version = version;
    ends->local_port = sk->src_port;
    ends->remote_port = bpf_ntohs(sk->dst_port);
    __u32* local = (__u32*)ends->local;
    __u32* remote = (__u32*)ends->remote;
    if (version == 4) {
        local[0] = sk->src_ip4;
        remote[0] = sk->dst_ip4;
        return;
    }
    local[0] = sk->src_ip6[0];
    local[1] = sk->src_ip6[1];
    local[2] = sk->src_ip6[2];
    local[3] = sk->src_ip6[3];
    remote[0] = sk->dst_ip6[0];
    remote[1] = sk->dst_ip6[1];
    remote[2] = sk->dst_ip6[2];
    remote[3] = sk->dst_ip6[3];
}

static __always_inline __u32 version_of(struct __sk_buff* skb) {
    return skb->protocol == bpf_htons(ETH_P_IPV6) ? 6 : 4;
}

/** Leaves out the payload that a connection moved before its first packet here, which this is. */
static __always_inline void leave_out_past(struct __sk_buff* skb, struct bpf_sock* sk,
                                           struct socket_state* state, enum way way) {
    void* address = kernel_address(sk);
    state->received_before = payload_received(address);
    state->sent_before = payload_handed_down(address);
    if (way == SENT) {
        state->sent_before -= skb->len - stream_headers(skb);  // counted by TCP already
    }
}

/** Counts a packet at a listener for the connection that it may lead to. */
static __noinline int count_handshake(struct __sk_buff* skb, struct bpf_sock* sk, struct socket_state* state,
                                      enum way way) {
    struct packet packet = {};
    if (!read_packet(skb, read_from_cgroup_skb, way, &packet)) {
        LOSE(packets, 1);
        return 0;
    }
    struct amount amount = amount_of(skb, packet.headers);
    struct handshake_key key = {.listener = state->id, .remote_port = packet.ends.remote_port};
    __builtin_memcpy(key.local, packet.ends.local, sizeof(key.local));
    __builtin_memcpy(key.remote, packet.ends.remote, sizeof(key.remote));
    struct handshake* handshake = bpf_map_lookup_elem(&handshakes, &key);
    if (!handshake) {
        struct handshake fresh = {
            .executable = state->executable, .opened = bpf_ktime_get_boot_ns(), .domain = sk->family};
        bpf_map_update_elem(&handshakes, &key, &fresh, BPF_NOEXIST);
        handshake = bpf_map_lookup_elem(&handshakes, &key);
    }
    if (handshake) {
        add(way == SENT ? &handshake->sent : &handshake->received, &amount);
        handshake->seen[1] = handshake->seen[0];
        handshake->seen[0].place = (__u64)kernel_address(skb);
        handshake->seen[0].length = skb->len;
        handshake->seen[0].flags = packet.tcp_flags;
        return 0;
    }
    LOSE(handshakes, 1);
    struct rest_key rest = rest_of(state->executable, sk->family, IPPROTO_TCP, DIRECTION_INPUT);
    count_rest(&rest, &amount, way);
    return 0;
}

/** Not inlined, to spare the stack of what `find_stream` calls besides. */
static __noinline int begin_stream(struct __sk_buff* skb, struct bpf_sock* sk, struct socket_state* state,
                                   enum way way) {
    struct flow* flow = &state->flow.flow;
    struct socket_facts facts = {.type = SOCK_STREAM, .domain = sk->family, .protocol = IPPROTO_TCP};
    ends_of(sk, version_of(skb), &flow->ends);
    begin_flow(flow, state, &facts, state->direction);
    if (state->parent) {
        take_handshake(skb, state, flow, way);
    }
    if (!state->is_new) {
        leave_out_past(skb, sk, state, way);
    }
    return 1;
}

/** Finds the flow of a packet that has none yet; 0 when it belongs to a handshake, and is counted there. */
static __noinline int find_stream(struct __sk_buff* skb, struct socket_state* state, enum way way) {
    struct bpf_sock* sk = full_socket(skb);
    if (!sk) {
        return 0;
    }
    if (state->kind == KIND_LISTENER && sk->state == TCP_LISTEN) {
        count_handshake(skb, sk, state, way);
        return 0;
    }
    if (take_place(&state->flow.flow)) {
        if (state->kind == KIND_LISTENER) {
            leave_listener(state);
        }
        begin_stream(skb, sk, state, way);
    }
    return 1;
}

static __always_inline void count_stream(struct __sk_buff* skb, struct socket_state* state, enum way way) {
    struct flow* flow = &state->flow.flow;
    if (!LIKELY(flow->id) && !find_stream(skb, state, way)) {
        return;
    }
    __u64 wire = skb->len;
    if (skb->gso_size) {
        wire += repeated_headers(skb, stream_headers(skb));
    }
    __sync_fetch_and_add(way == SENT ? &flow->sent.wire : &flow->received.wire, wire);
}

SEC("tp_btf/inet_sock_set_state")
int BPF_PROG(on_state, struct sock* sk, int before, int after) {
    if (sk->sk_protocol != IPPROTO_TCP ||
        (after != TCP_SYN_SENT && after != TCP_LISTEN && after != TCP_CLOSE)) {
        return 0;
    }
    struct socket_state* state = state_of(sk);
    if (!state) {
        return 0;
    }
    if (after == TCP_CLOSE) {
        refresh_payload(state, sk);
        state->flow.flow.lingers =
            before == TCP_FIN_WAIT1 || before == TCP_FIN_WAIT2 || before == TCP_CLOSING;
        return 0;
    }
    end_flow(state, sk);  // connected before, then disconnected
    state->parent = 0;
    state->is_new = 1;
    state->received_before = 0;
    state->sent_before = 0;
    note_user(state, sk, 0, 0);
    state->kind = after == TCP_LISTEN ? KIND_LISTENER : KIND_STREAM;
    state->direction = after == TCP_LISTEN ? DIRECTION_INPUT : DIRECTION_OUTPUT;
    return 0;
}

static __always_inline int end_stream(struct sock* sk) {
    struct socket_state* state = bpf_sk_storage_get(&sockets, sk, 0, 0);
    if (state) {
        follow_multipath(state, sk);
        end_flow(state, sk);
    }
    return 0;
}

SEC("tp_btf/tcp_destroy_sock")
int BPF_PROG(on_destroy, struct sock* sk) {
    return end_stream(sk);
}

/**
 * Once more, because the kernel leaves out a program that it is just running on that processor, as when an interrupt
 * ends another connection. This one finds its flow gone nearly always.
 */
SEC("tp_btf/tcp_destroy_sock")
int BPF_PROG(on_nested_destroy, struct sock* sk) {
    return end_stream(sk);
}
