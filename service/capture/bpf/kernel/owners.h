/* SPDX-License-Identifier: GPL-3.0-or-later */
/*
 * Whose a socket is, and the hooks that tell it: in all of them the process that acts is the one that runs.
 */
#pragma once

static __always_inline int same_image(const struct image* left, const struct image* right) {
    return left->started == right->started && left->process == right->process && left->execs == right->execs;
}

/**
 * Makes the process that runs the owner of a socket that the kernel knows at `sk`. Bytes so far stay with the
 * owner before, if that one was sure.
 */
static __always_inline void own(struct socket_state* state, void* sk, const struct image* image, __u8 grade) {
    __u64 executable = current_executable(image);
    if (executable == EXECUTABLE_UNKNOWN || (grade == OWNER_LIKELY && executable == EXECUTABLE_KERNEL)) {
        return;  // it is ending, or it only tidies up: the owner before is the better one
    }
    if (state->flow.flow.id && state->grade == OWNER_SURE && state->executable != executable) {
        refresh_payload(state, sk);
        tell(&state->flow, FLOW_LIVES);
    }
    state->image = *image;
    state->executable = executable;
    state->grade = grade;
    state->flow.flow.executable = executable;
    state->flow.flow.grade = grade;
}

static __noinline int own_surely(struct socket_state* state, void* sk) {
    struct image image = {};
    if (!state) {
        return 0;
    }
    image_of(bpf_get_current_task_btf(), &image);
    own(state, sk, &image, OWNER_SURE);
    return 0;
}

/** As `own_surely`, at the price of a comparison when nothing changes. */
static __always_inline void note_user(struct socket_state* state, void* sk) {
    struct image image = {};
    image_of(bpf_get_current_task_btf(), &image);
    if (!state->is_kernels && (state->grade != OWNER_SURE || !same_image(&state->image, &image))) {
        own_surely(state, sk);
    }
}

static __always_inline void note_heir(struct socket_state* state, void* sk) {
    struct image image = {};
    image_of(bpf_get_current_task_btf(), &image);
    if (state->grade != OWNER_SURE) {
        own(state, sk, &image, OWNER_LIKELY);
    }
}

static __always_inline __u8 kind_of(__u32 family, __u32 type, __u32 protocol) {
    return family == AF_PACKET                              ? KIND_PACKET
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
        note_user(state, kernel_address(sk));
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

static __always_inline int on_transfer(struct sock* sk) {
    __u16 family = sk->__sk_common.skc_family;
    if (!is_internet(family) && family != AF_PACKET) {
        return 0;
    }
    struct socket_state* state = state_of(sk);
    if (state) {
        note_user(state, sk);
    }
    return 0;
}

SEC("tp_btf/sock_send_length")
int BPF_PROG(on_send, struct sock* sk, int length, int flags) {
    return on_transfer(sk);
}

SEC("tp_btf/sock_recv_length")
int BPF_PROG(on_receive, struct sock* sk, int length, int flags) {
    return on_transfer(sk);
}
