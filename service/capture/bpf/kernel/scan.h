/* SPDX-License-Identifier: GPL-3.0-or-later */
/* Sockets that are older than the capture: found among the open files of all tasks, in two passes. */
#pragma once

static __always_inline struct sock* internet_socket(struct file* file) {
    struct socket* socket = bpf_sock_from_file(file);
    struct sock* sk = socket ? socket->sk : 0;
    return sk && is_internet(sk->__sk_common.skc_family) ? sk : 0;
}

static __always_inline struct port_key port_of(struct sock* sk) {
    struct port_key key = {.netns = BPF_CORE_READ(sk, __sk_common.skc_net.net, ns.inum),
                           .port = BPF_CORE_READ(sk, __sk_common.skc_num)};
    return key;
}

static __always_inline void scan_owner(struct socket_state* state, struct task_struct* task,
                                       struct sock* sk) {
    if (state->grade == OWNER_UNKNOWN) {
        __u64 executable = name_executable(task);
        if (executable != EXECUTABLE_UNKNOWN) {  // else another task that has the socket is asked
            image_of(task, &state->image);
            state->executable = executable;
            state->grade = OWNER_LIKELY;
        }
    }
    if (state->kind == KIND_STREAM && BPF_CORE_READ(sk, __sk_common.skc_state) == TCP_LISTEN) {
        struct port_key key = port_of(sk);
        __u64 executable = state->executable;
        state->kind = KIND_LISTENER;
        state->direction = DIRECTION_INPUT;
        bpf_map_update_elem(&listening, &key, &executable, BPF_ANY);
    }
}

static __always_inline void scan_direction(struct socket_state* state, struct sock* sk) {
    if (state->kind == KIND_STREAM && state->direction == DIRECTION_UNDEFINED &&
        BPF_CORE_READ(sk, __sk_common.skc_state) != TCP_CLOSE) {
        struct port_key key = port_of(sk);
        state->direction = bpf_map_lookup_elem(&listening, &key) ? DIRECTION_INPUT : DIRECTION_OUTPUT;
    }
}

SEC("iter/task_file")
int scan(struct bpf_iter__task_file* context) {
    struct file* file = context->file;
    struct task_struct* task = context->task;
    struct sock* sk = file && task ? internet_socket(file) : 0;
    struct socket_state* state = sk ? state_of(sk) : 0;
    if (!state) {
        return 0;
    }
    if (scan_pass == SCAN_OWNERS) {
        scan_owner(state, task, sk);
    } else {
        scan_direction(state, sk);
    }
    return 0;
}

/** Storage for a socket that no hook and no scan has seen. */
static __noinline struct socket_state* adopt(struct __sk_buff* skb) {
    struct bpf_sock* sk = full_socket(skb);
    struct socket_state* state = sk ? state_of_bpf_sock(sk) : 0;
    if (!sk || !state) {
        LOSE(sockets, 1);
        LOSE(bytes, skb->len);
        return 0;
    }
    if (sk->state == TCP_LISTEN) {
        state->kind = KIND_LISTENER;
    }
    if (state->is_kernels) {
        return state;
    }
    struct port_key key = port_of(kernel_address(sk));
    __u64* listener = state->kind == KIND_STREAM ? bpf_map_lookup_elem(&listening, &key) : 0;
    if (!listener) {
        LOSE(strangers, 1);  // given up by its process, but not at its end yet
        return state;
    }
    state->executable = *listener;  // which has not accepted it yet
    state->grade = OWNER_LIKELY;
    state->direction = DIRECTION_INPUT;
    return state;
}
