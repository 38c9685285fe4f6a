/* SPDX-License-Identifier: GPL-3.0-or-later */
/*
 * Whose a socket is, and the hooks that tell it: in all of them the process that acts is the one that runs.
 */
#pragma once

static __always_inline int same_image(const struct image* left, const struct image* right) {
    return left->started == right->started && left->process == right->process && left->execs == right->execs;
}

/**
 * What of a socket's bytes is the new owner's, whose call has just moved some: its own, and what waits to be read.
 */
static __always_inline struct foreign share_of(const struct socket_state* state, void* sk, __u32 received,
                                               __u32 sent) {
    struct tcp_sock* tcp = sk;
    struct foreign share = {received, sent};
    if (state->kind == KIND_STREAM) {
        const __s32 unsent = BPF_CORE_READ(tcp, write_seq) - BPF_CORE_READ(tcp, snd_nxt);
        const __s32 unread = BPF_CORE_READ(tcp, rcv_nxt) - BPF_CORE_READ(tcp, copied_seq) - has_fin(sk);
        share.received += unread > 0 ? unread : 0;
        share.sent -= unsent < 0 ? 0 : unsent < sent ? unsent : sent;
    }
    return share;
}

/** Makes an executable the owner of a socket that the kernel knows at `sk`. What was moved before stays. */
static __always_inline void pass_to(struct socket_state* state, void* sk, const struct owner* owner,
                                    __u32 received, __u32 sent) {
    if (state->flow.flow.id) {
        struct foreign share = share_of(state, sk, received, sent);
        refresh_payload(state, sk);
        change_hands(&state->flow, owner->executable, owner->grade, &share);
    }
    state->image = owner->image;
    state->executable = owner->executable;
    state->grade = owner->grade;
}

/** Makes the process that runs the owner; its call that tells so has moved that much payload. */
static __noinline int own(struct socket_state* state, void* sk, __u8 grade, __u32 received, __u32 sent) {
    struct owner owner = {.grade = grade};
    if (!state) {
        return 0;
    }
    image_of(bpf_get_current_task_btf(), &owner.image);
    owner.executable = current_executable(&owner.image);
    if (owner.executable == EXECUTABLE_UNKNOWN || owner.executable == EXECUTABLE_KERNEL) {
        return 0;  // it is ending, or it works for someone: the owner before is the better one
    }
    pass_to(state, sk, &owner, received, sent);
    if (state->kind == KIND_MULTIPATH) {
        keep_multipath_owner(sk, &owner);
    }
    return 0;
}

/**
 * Makes the owner of the MPTCP socket above the owner of a TCP socket below it, if it is one. Asked now and then,
 * since nobody tells of the sockets below when somebody acts above them.
 */
static __noinline int follow_multipath(struct socket_state* state, struct sock* sk) {
    struct owner* found = state && sk && state->kind == KIND_STREAM ? find_multipath_owner(sk) : 0;
    if (found && found->executable != state->executable &&
        (found->grade == OWNER_SURE || found->grade > state->grade)) {
        struct owner owner = *found;
        pass_to(state, sk, &owner, 0, 0);
    }
    return 0;
}

/** At the price of a comparison when nothing changes. */
static __always_inline void note_user(struct socket_state* state, void* sk, __u32 received, __u32 sent) {
    struct image image = {};
    image_of(bpf_get_current_task_btf(), &image);
    if (!state->is_kernels && (state->grade != OWNER_SURE || !same_image(&state->image, &image))) {
        own(state, sk, OWNER_SURE, received, sent);
    }
}

static __always_inline void note_heir(struct socket_state* state, void* sk) {
    if (state->grade != OWNER_SURE) {
        own(state, sk, OWNER_LIKELY, 0, 0);
    }
}

static __always_inline __u8 kind_of(__u32 family, __u32 type, __u32 protocol) {
    return family == AF_PACKET                              ? KIND_PACKET
           : protocol == IPPROTO_MPTCP                      ? KIND_MULTIPATH
           : protocol == IPPROTO_TCP && type == SOCK_STREAM ? KIND_STREAM
           : type == SOCK_RAW                               ? KIND_RAW
                                                            : KIND_DATAGRAM;
}

/** Whether the kernel made the socket for itself; those below an MPTCP socket are their program's. */
static __always_inline int is_kernels(struct sock* sk) {
    struct tcp_sock* tcp = (void*)sk;
    if (!BPF_CORE_READ_BITFIELD_PROBED(sk, sk_kern_sock)) {
        return 0;
    }
    return BPF_CORE_READ(sk, sk_protocol) != IPPROTO_TCP || BPF_CORE_READ(sk, sk_type) != SOCK_STREAM ||
           !bpf_core_field_exists(tcp->is_mptcp) || !BPF_CORE_READ(tcp, is_mptcp);
}

static __noinline int introduce(struct socket_state* state, struct sock* sk) {
    if (!state) {
        return 0;
    }
    __u8 kind = kind_of(BPF_CORE_READ(sk, __sk_common.skc_family), BPF_CORE_READ(sk, sk_type),
                        BPF_CORE_READ(sk, sk_protocol));
    state->direction = DIRECTION_UNDEFINED;
    if (is_kernels(sk)) {
        kind = kind == KIND_STREAM ? KIND_STREAM : KIND_CONTROL;
        state->executable = EXECUTABLE_KERNEL;
        state->grade = OWNER_SURE;
        state->is_kernels = 1;
    }
    state->id = new_id();
    barrier();
    state->kind = kind;  // last: from now on other processors take it for introduced
    return 0;
}

/** The storage of a socket, made now if need be; null when there is no memory. */
static __always_inline struct socket_state* state_of(struct sock* sk) {
    struct socket_state* state = bpf_sk_storage_get(&sockets, sk, 0, BPF_SK_STORAGE_GET_F_CREATE);
    if (state && !LIKELY(state->kind)) {
        introduce(state, sk);
    }
    return state;
}

/** The socket of a packet at a control group's hook; null when it has none. */
static __always_inline struct bpf_sock* full_socket(struct __sk_buff* skb) {
    struct bpf_sock* sk = skb->sk;
    return sk ? bpf_sk_fullsock(sk) : 0;
}

/**
 * What a hook's context or socket is to the kernel itself. The detour, since no offset may be added to the
 * former.
 */
static __always_inline void* kernel_address(void* seen) {
    void* address = 0;
    bpf_probe_read_kernel(&address, sizeof(address), &seen);
    return address;
}

/** As `state_of`, for the socket of a control group's hook. */
static __always_inline struct socket_state* state_of_bpf_sock(struct bpf_sock* sk) {
    struct socket_state* state = bpf_sk_storage_get(&sockets, sk, 0, BPF_SK_STORAGE_GET_F_CREATE);
    if (state && !LIKELY(state->kind)) {
        introduce(state, kernel_address(sk));
    }
    return state;
}

static __always_inline int is_internet(__u16 family) {
    return family == AF_INET || family == AF_INET6;
}

SEC("cgroup/sock_create")
int on_create(struct bpf_sock* sk) {
    struct socket_state* state = state_of_bpf_sock(sk);
    if (state) {
        state->is_new = 1;
        note_heir(state, kernel_address(sk));
    }
    return 1;
}

/** Called before the first datagram leaves, which the I/O tracepoints are not. */
static __always_inline int on_address(struct bpf_sock_addr* context) {
    struct bpf_sock* sk = context->sk;
    struct socket_state* state = sk ? state_of_bpf_sock(sk) : 0;
    if (state) {
        note_user(state, kernel_address(sk), 0, 0);
    }
    return 1;
}

SEC("cgroup/connect4")
int on_connect4(struct bpf_sock_addr* context) {
    return on_address(context);
}

SEC("cgroup/connect6")
int on_connect6(struct bpf_sock_addr* context) {
    return on_address(context);
}

SEC("cgroup/sendmsg4")
int on_sendmsg4(struct bpf_sock_addr* context) {
    return on_address(context);
}

SEC("cgroup/sendmsg6")
int on_sendmsg6(struct bpf_sock_addr* context) {
    return on_address(context);
}

/** A call that has moved payload. */
static __always_inline int on_transfer(struct sock* sk, __u32 received, __u32 sent) {
    __u16 family = sk->__sk_common.skc_family;
    if (!is_internet(family) && family != AF_PACKET) {
        return 0;
    }
    struct socket_state* state = state_of(sk);
    if (state) {
        note_user(state, sk, received, sent);
    }
    return 0;
}

SEC("tp_btf/sock_send_length")
int BPF_PROG(on_send, struct sock* sk, int length, int flags) {
    return length > 0 ? on_transfer(sk, 0, length) : 0;
}

/** Whoever only looks, or finds nothing, does not get the socket for it. */
SEC("tp_btf/sock_recv_length")
int BPF_PROG(on_receive, struct sock* sk, int length, int flags) {
    return length > 0 && !(flags & MSG_PEEK) ? on_transfer(sk, length, 0) : 0;
}
