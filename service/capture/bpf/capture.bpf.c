// SPDX-License-Identifier: GPL-3.0-or-later
// The programs in the kernel that count every IP byte for the executable that moved it. Each header has one
// job.
#include <linux/bpf.h>
#include <linux/errno.h>
#include <linux/if_ether.h>
// clang-format off
#include "kernel/types.h"
#include <bpf/bpf_helpers.h>
#include <bpf/bpf_core_read.h>
#include <bpf/bpf_endian.h>
#include <bpf/bpf_tracing.h>
#include "records.h"
#include "kernel/maps.h"
#include "kernel/executables.h"
#include "kernel/packets.h"
#include "kernel/flows.h"
#include "kernel/pasts.h"
#include "kernel/ends.h"
#include "kernel/multipath.h"
#include "kernel/owners.h"
#include "kernel/streams.h"
#include "kernel/datagrams.h"
#include "kernel/strays.h"
#include "kernel/tables.h"
#include "kernel/scan.h"
// clang-format on

char bpf_license[] SEC("license") = "GPL";

static __always_inline int count_packet(struct __sk_buff* skb, enum way way) {
    struct bpf_sock* sk = skb->sk;
    if (!sk) {
        return 1;
    }
    struct socket_state* state = bpf_sk_storage_get(&sockets, sk, 0, 0);
    if (!LIKELY(state && state->kind)) {
        state = adopt(skb);
        if (!state) {
            return 1;
        }
    }
    if (state->kind == KIND_STREAM || state->kind == KIND_LISTENER) {
        count_stream(skb, state, way);
    } else if (state->kind == KIND_CONTROL) {
        count_control(skb, way);
    } else {
        count_datagram(skb, state, way);
    }
    return 1;
}

SEC("cgroup_skb/egress")
int on_egress(struct __sk_buff* skb) {
    return count_packet(skb, SENT);
}

SEC("cgroup_skb/ingress")
int on_ingress(struct __sk_buff* skb) {
    return count_packet(skb, RECEIVED);
}
