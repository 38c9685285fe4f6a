/* SPDX-License-Identifier: GPL-3.0-or-later */
/* The payload of TCP's sockets, and the end of the flow in a socket's storage. */
#pragma once

/** 1 when the other end has sent its last, which TCP counts as if it were a byte. For any pointer to a socket. */
static __always_inline int has_fin(void* sk) {
    struct sock* address = sk;
    return BPF_CORE_READ(address, __sk_common.skc_flags) >> bpf_core_enum_value(enum sock_flags, SOCK_DONE) &
           1;
}

/** Payload that a TCP socket took in order. */
static __always_inline __u64 payload_received(void* sk) {
    struct tcp_sock* tcp = sk;
    return BPF_CORE_READ(tcp, bytes_received) - has_fin(sk);
}

/** Payload that a TCP socket handed down, each byte once however often it was sent again. */
static __always_inline __u64 payload_handed_down(void* sk) {
    struct tcp_sock* tcp = sk;
    return BPF_CORE_READ(tcp, bytes_sent) - BPF_CORE_READ(tcp, bytes_retrans);
}

/**
 * The same, without what a device refused and got once more; that would count SYN and FIN as bytes by itself.
 */
static __always_inline __u64 payload_sent(void* sk) {
    struct tcp_sock* tcp = sk;
    const __u64 handed_down = payload_handed_down(sk);
    const __u32 on_its_way = BPF_CORE_READ(tcp, snd_nxt) - BPF_CORE_READ(tcp, snd_una);
    const __u64 sequence = BPF_CORE_READ(tcp, bytes_acked) + on_its_way;
    return handed_down < sequence ? handed_down : sequence;
}

/** Adds what TCP has counted since `before`, where its count is kept; once, whoever does it at the same time. */
static __always_inline void add_growth(__u64* payload, __u64* before, __u64 now) {
    const __u64 known = *before;
    if ((__s64)(now - known) > 0 && __sync_val_compare_and_swap(before, known, now) == known) {
        __sync_fetch_and_add(payload, now - known);
    }
}

/**
 * Brings the payload of the flow in a socket's storage up to date: TCP keeps count of it itself, until the
 * socket is disconnected.
 */
static __always_inline void refresh_payload(struct socket_state* state, void* sk) {
    if (state->kind == KIND_STREAM && state->flow.flow.id) {
        add_growth(&state->flow.flow.received.payload, &state->received_before, payload_received(sk));
        add_growth(&state->flow.flow.sent.payload, &state->sent_before, payload_sent(sk));
    }
}

/** Ends the flow in a socket's storage, whose place is free then. */
static __noinline int end_flow(struct socket_state* state, void* sk) {
    struct sock* address = sk;
    if (!state || !state->flow.flow.id) {
        return 0;
    }
    struct tracked_flow* tracked = &state->flow;
    const struct foreign none = {};
    refresh_payload(state, sk);
    tell_end(tracked, tracked->flow.executable, &none);
    if (tracked->flow.protocol == IPPROTO_TCP || tracked->flow.protocol == IPPROTO_UDP) {
        remember_past(&tracked->flow, BPF_CORE_READ(address, __sk_common.skc_net.net, ns.inum));
    }
    free_place(tracked);
    return 0;
}
