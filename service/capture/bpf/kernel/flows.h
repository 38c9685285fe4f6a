/* SPDX-License-Identifier: GPL-3.0-or-later */
/* Counting: flows begin, grow, are told of, and end. */
#pragma once

static __always_inline void add(struct amount* sum, const struct amount* amount) {
    __sync_fetch_and_add(&sum->wire, amount->wire);
    if (amount->payload) {
        __sync_fetch_and_add(&sum->payload, amount->payload);
    }
}

static __always_inline void count(struct flow* flow, enum way way, const struct amount* amount) {
    add(way == SENT ? &flow->sent : &flow->received, amount);
}

static __always_inline struct rest_key rest_of(__u64 executable, __u16 domain, __u16 protocol,
                                               enum flow_direction direction) {
    struct rest_key key = {
        .executable = executable, .protocol = protocol, .domain = domain, .direction = direction};
    return key;
}

/** What an entry of a table is made of that is filled in its place: for the stack, it is large. */
static const struct tracked_flow blank_flow = {};

static __always_inline void fill_rest(struct flow* rest, const struct rest_key* key) {
    rest->executable = key->executable;
    rest->opened = bpf_ktime_get_boot_ns();
    rest->protocol = key->protocol;
    rest->domain = key->domain;
    rest->type = key->protocol == IPPROTO_TCP ? SOCK_STREAM : SOCK_RAW;
    rest->grade = OWNER_SURE;
    rest->direction = key->direction;
    barrier();
    rest->id = new_id();  // last: from now on it is told
}

/** Counts what has no flow of its own. */
static __noinline int count_rest(const struct rest_key* key, const struct amount* amount, enum way way) {
    if (!key || !amount || !amount->wire) {
        return 0;
    }
    struct tracked_flow* rest = bpf_map_lookup_elem(&rests, key);
    if (!rest) {
        const int is_first = bpf_map_update_elem(&rests, key, &blank_flow, BPF_NOEXIST) == 0;
        rest = bpf_map_lookup_elem(&rests, key);
        if (rest && is_first) {
            fill_rest(&rest->flow, key);
        }
    }
    if (rest) {
        count(&rest->flow, way, amount);
    } else {
        LOSE(bytes, amount->wire);
    }
    return 0;
}

static __always_inline int count_kernels(__u16 domain, __u16 protocol, const struct amount* amount,
                                         enum way way) {
    struct rest_key key = rest_of(EXECUTABLE_KERNEL, domain, protocol, DIRECTION_UNDEFINED);
    return count_rest(&key, amount, way);
}

static __always_inline struct amount since(struct amount now, const struct amount* told) {
    struct amount amount = {now.wire - told->wire, now.payload - told->payload};
    return amount;
}

/** Makes `told` hold what happened since the flow was told of; returns the wire bytes of it. */
static __always_inline __u64 whats_new(const struct tracked_flow* tracked, struct flow* told) {
    *told = tracked->flow;
    told->received = since(told->received, &tracked->told_received);
    told->sent = since(told->sent, &tracked->told_sent);
    return told->received.wire + told->sent.wire;
}

static __always_inline void mark_told(struct tracked_flow* tracked, const struct flow* told) {
    tracked->told_received.wire += told->received.wire;
    tracked->told_received.payload += told->received.payload;
    tracked->told_sent.wire += told->sent.wire;
    tracked->told_sent.payload += told->sent.payload;
    tracked->is_known = 1;
}

static __always_inline struct flow_key key_of(const struct flow* flow) {
    struct flow_key key = {.socket = flow->socket,
                           .remote_port = flow->ends.remote_port,
                           .protocol = flow->protocol,
                           .version = flow->ends.version};
    __builtin_memcpy(key.remote, flow->ends.remote, sizeof(key.remote));
    return key;
}

/**
 * Puts the last of a flow where the daemon finds it when it reads the tables next; 0 when there is no room
 * either.
 */
static __noinline int put_aside(const struct flow* told) {
    if (!told) {
        return 0;
    }
    struct flow_key key = key_of(told);
    if (bpf_map_update_elem(&flows, &key, &blank_flow, BPF_NOEXIST)) {
        return 0;
    }
    struct tracked_flow* last = bpf_map_lookup_elem(&flows, &key);
    if (!last) {
        return 0;
    }
    last->flow.socket = told->socket;
    last->flow.executable = told->executable;
    last->flow.opened = told->opened;
    last->flow.received = told->received;
    last->flow.sent = told->sent;
    last->flow.ends = told->ends;
    last->flow.protocol = told->protocol;
    last->flow.domain = told->domain;
    last->flow.type = told->type;
    last->flow.grade = told->grade;
    last->flow.direction = told->direction;
    last->flow.ended = told->ended;
    barrier();
    last->flow.id = told->id;  // last: from now on it is told
    return 1;
}

/** Payload that has moved, and is not the owner's. */
struct foreign {
    __u64 received;
    __u64 sent;
};

/** Takes payload out of an amount, with its part of the headers. */
static __always_inline void leave_out(struct amount* amount, __u64 payload) {
    const __u64 left_out = payload < amount->payload ? payload : amount->payload;
    if (left_out) {
        amount->wire -= (amount->wire << 16) / amount->payload * left_out >> 16;
        amount->payload -= left_out;
    }
}

/**
 * Tells at once that a flow has ended, but for the bytes that are `foreign`. Where it can't, its bytes go to the
 * rest.
 */
static __noinline int tell_end(struct tracked_flow* tracked, const struct foreign* foreign) {
    struct flow told;
    if (!tracked || !foreign) {
        return 0;
    }
    whats_new(tracked, &told);
    leave_out(&told.received, foreign->received);
    leave_out(&told.sent, foreign->sent);
    if (!tracked->is_known && told.received.wire + told.sent.wire == 0) {
        return 0;
    }
    told.ended = FLOW_ENDED;
    if (bpf_ringbuf_output(&events, &told, sizeof(told), BPF_RB_NO_WAKEUP) && !put_aside(&told)) {
        LOSE(events, 1);
        struct rest_key rest = rest_of(told.executable, told.domain, told.protocol, told.direction);
        count_rest(&rest, &told.received, RECEIVED);
        count_rest(&rest, &told.sent, SENT);
    }
    mark_told(tracked, &told);
    return 0;
}

/**
 * Gives what a flow moves from now on, and what is `foreign`, to another owner: as a flow of its own with the same
 * ends.
 */
static __noinline int change_hands(struct tracked_flow* tracked, __u64 executable, __u8 grade,
                                   const struct foreign* foreign) {
    if (!tracked || !foreign) {
        return 0;
    }
    // What nobody was sure of, and was not told, was the new owner's all the time.
    if (tracked->flow.executable != executable && (tracked->flow.grade == OWNER_SURE || tracked->is_known)) {
        tell_end(tracked, foreign);
        tracked->flow.opened = bpf_ktime_get_boot_ns();
        tracked->flow.id = new_id();
        tracked->is_known = 0;
        tracked->waited = 0;
    }
    tracked->flow.executable = executable;
    tracked->flow.grade = grade;
    return 0;
}

/** What a socket is to its flows; read from its storage and from the socket itself. */
struct socket_facts {
    __u32 type;
    __u32 domain;
    __u32 protocol;
};

/**
 * Takes the place in a socket's storage for a flow that begins now; 0 when it is taken, maybe this very moment by
 * another processor.
 */
static __always_inline int take_place(struct flow* flow) {
    return !flow->opened && !__sync_val_compare_and_swap(&flow->opened, 0, bpf_ktime_get_boot_ns());
}

/** Fills a place that was taken, `opened` and `ends` apart. */
static __always_inline void begin_flow(struct flow* flow, const struct socket_state* state,
                                       const struct socket_facts* facts, __u8 direction) {
    flow->socket = state->id;
    flow->executable = state->executable;
    flow->grade = state->grade;
    flow->protocol = facts->protocol;
    flow->domain = facts->domain;
    flow->type = facts->type;
    flow->direction = direction;
    flow->id = new_id();
}
