/* SPDX-License-Identifier: GPL-3.0-or-later */
/*
 * Reading the tables: the daemon reads these iterators once a second, and gets `struct flow` after `struct
 * flow`.
 */
#pragma once

/** Readings for which a flow waits for a sure owner: accepted by one process, it may be served by another. */
#define MAX_WAIT 3

/** Readings without a byte after which a flow without an end of its own has ended. */
#define QUIET_READINGS 60

/** Longer than a handshake takes whose packets were lost once or twice. Later ones are counted anew. */
#define MAX_HANDSHAKE_NS (10 * 1000000000ull)

/**
 * Tells of what is new; 1 when the flow has ended by its quiet. A full page is written again from the start.
 */
static __noinline int report(struct seq_file* sequence, struct tracked_flow* tracked, int ends_by_quiet) {
    struct flow told;
    if (!sequence || !tracked || !tracked->flow.id) {
        return 0;
    }
    struct flow* flow = &tracked->flow;
    if (!has_news(flow) && !flow->ended) {
        const __u32 quiet = tracked->quiet + 1;
        told = *flow;
        told.received = told.sent = (struct amount){};  // what comes just now is told another time
        told.ended = ends_by_quiet && quiet >= QUIET_READINGS;
        if (told.ended && bpf_seq_write(sequence, &told, sizeof(told))) {
            return 0;
        }
        tracked->quiet = quiet;
        return told.ended;
    }
    tracked->quiet = 0;
    // One that has ended was put aside when there was no room to tell of its end.
    if (flow->grade != OWNER_SURE && tracked->waited < MAX_WAIT && !flow->ended && !is_last_reading) {
        ++tracked->waited;
        return 0;
    }
    take_news(flow, &told);
    if (bpf_seq_write(sequence, &told, sizeof(told))) {
        put_back(flow, &told);
    } else {
        tracked->is_known = 1;
    }
    return 0;
}

SEC("iter/bpf_sk_storage_map")
int read_sockets(struct bpf_iter__bpf_sk_storage_map* context) {
    struct socket_state* state = context->value;
    struct sock* sk = context->sk;
    if (!state || !sk) {
        return 0;
    }
    ++occupancy.sockets;
    state->new_flows = 0;
    follow_multipath(state, sk);
    refresh_payload(state, sk);
    const int ends_by_quiet = state->kind != KIND_STREAM;
    if (state->flow.flow.id && report(context->meta->seq, &state->flow, ends_by_quiet)) {
        free_place(&state->flow);
    }
    return 0;
}

/** For `flows` and `rests`. The daemon takes out those that ended. */
SEC("iter/bpf_map_elem")
int read_flows(struct bpf_iter__bpf_map_elem* context) {
    struct tracked_flow* tracked = context->value;
    if (tracked) {
        ++*(tracked->flow.socket ? &occupancy.flows : &occupancy.rests);
        report(context->meta->seq, tracked, 1);
    }
    return 0;
}

/**
 * Handshakes that lead to nothing: their bytes go to the listener's rest, their keys to the daemon, to take
 * out.
 */
SEC("iter/bpf_map_elem")
int read_handshakes(struct bpf_iter__bpf_map_elem* context) {
    const struct handshake_key* key = context->key;
    struct handshake* handshake = context->value;
    if (!key || !handshake) {
        return 0;
    }
    ++occupancy.handshakes;
    if (bpf_ktime_get_boot_ns() - handshake->opened < MAX_HANDSHAKE_NS && !is_last_reading) {
        return 0;
    }
    if (bpf_seq_write(context->meta->seq, (void*)key, sizeof(*key)) == 0) {
        struct amount received = take(&handshake->received);
        struct amount sent = take(&handshake->sent);
        struct rest_key rest =
            rest_of(handshake->executable, handshake->domain, IPPROTO_TCP, DIRECTION_INPUT);
        count_rest(&rest, &received, RECEIVED);
        count_rest(&rest, &sent, SENT);
    }
    return 0;
}
