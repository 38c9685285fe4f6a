/* SPDX-License-Identifier: GPL-3.0-or-later */
/*
 * MPTCP: programs act on a socket above, packets belong to the TCP sockets below it, and from these there is no way
 * to the storage of the one above. So its owner is kept in a table too.
 */
#pragma once

static __always_inline struct multipath_key multipath_key(void* above) {
    struct mptcp_sock* multipath = above;
    struct multipath_key key = {.address = (__u64)above, .secret = BPF_CORE_READ(multipath, local_key)};
    return key;
}

static __always_inline void keep_multipath_owner(void* above, const struct owner* owner) {
    if (bpf_core_type_exists(struct mptcp_sock)) {
        struct multipath_key key = multipath_key(above);
        bpf_map_update_elem(&multipath_owners, &key, owner, BPF_ANY);
    }
}

/** Of the socket above a TCP socket; null when there is none, or nobody acted on it yet. */
static __always_inline struct owner* find_multipath_owner(struct sock* sk) {
    struct tcp_sock* tcp = (void*)sk;
    struct inet_connection_sock* connection = (void*)sk;
    if (!bpf_core_type_exists(struct mptcp_sock) || !BPF_CORE_READ(tcp, is_mptcp)) {
        return 0;
    }
    struct mptcp_subflow_context* below = BPF_CORE_READ(connection, icsk_ulp_data);
    void* above = below ? BPF_CORE_READ(below, conn) : 0;
    if (!above) {
        return 0;
    }
    struct multipath_key key = multipath_key(above);
    return bpf_map_lookup_elem(&multipath_owners, &key);
}
