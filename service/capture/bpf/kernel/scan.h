/* SPDX-License-Identifier: GPL-3.0-or-later */
/* Sockets that are older than the capture: found among the open files of all tasks, in two passes. */
#pragma once

static __always_inline struct sock* internet_socket(struct file* file) {
    struct socket* socket = bpf_sock_from_file(file);
    struct sock* sk = socket ? socket->sk : 0;
    return sk && is_internet(sk->__sk_common.skc_family) ? sk : 0;
}

static __always_inline void scan_owner(struct socket_state* state, struct task_struct* task, int listens,
                                       const struct listening_key* port) {
    if (listens) {
        __u8 yes = 1;
        state->kind = KIND_LISTENER;
        state->direction = DIRECTION_INPUT;
        bpf_map_update_elem(&listening, port, &yes, BPF_ANY);
    }
    if (state->grade == OWNER_UNKNOWN) {
        image_of(task, &state->image);
        state->executable = name_executable(task);
        state->grade = OWNER_LIKELY;
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
    struct listening_key port = {.netns = BPF_CORE_READ(sk, __sk_common.skc_net.net, ns.inum),
                                 .port = BPF_CORE_READ(sk, __sk_common.skc_num)};
    const __u8 tcp_state = BPF_CORE_READ(sk, __sk_common.skc_state);
    if (scan_pass == SCAN_OWNERS) {
        scan_owner(state, task, state->kind == KIND_STREAM && tcp_state == TCP_LISTEN, &port);
    } else if (state->kind == KIND_STREAM && state->direction == DIRECTION_UNDEFINED &&
               tcp_state != TCP_CLOSE) {
        state->direction = bpf_map_lookup_elem(&listening, &port) ? DIRECTION_INPUT : DIRECTION_OUTPUT;
    }
    return 0;
}
