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

/** Counts what has no flow of its own. */
static __noinline int count_rest(const struct rest_key* key, const struct amount* amount, enum way way) {
    if (!key || !amount || !amount->wire) {
        return 0;
    }
    struct tracked_flow* rest = bpf_map_lookup_elem(&rests, key);
    if (!rest) {
        struct tracked_flow fresh = {};
        fresh.flow.id = new_id();
        fresh.flow.executable = key->executable;
        fresh.flow.opened = bpf_ktime_get_boot_ns();
        fresh.flow.protocol = key->protocol;
        fresh.flow.domain = key->domain;
        fresh.flow.type = key->protocol == IPPROTO_TCP ? SOCK_STREAM : SOCK_RAW;
        fresh.flow.grade = OWNER_SURE;
        fresh.flow.direction = key->direction;
        bpf_map_update_elem(&rests, key, &fresh, BPF_NOEXIST);
        rest = bpf_map_lookup_elem(&rests, key);
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
}

static __always_inline int was_told(const struct tracked_flow* tracked) {
    return tracked->told_received.wire + tracked->told_sent.wire != 0;
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
 * Puts a flow that ends where the daemon finds it when it reads the tables next; 0 when there is no room
 * either.
 */
static __always_inline int put_aside(struct tracked_flow* tracked, enum flow_end ended) {
    struct flow_key key = key_of(&tracked->flow);
    tracked->flow.ended = ended;
    return ended != FLOW_LIVES && bpf_map_update_elem(&flows, &key, tracked, BPF_NOEXIST) == 0;
}

/** Tells at once of a flow that ends or passes into other hands. Where it can't, its bytes go to the rest. */
static __noinline int tell(struct tracked_flow* tracked, enum flow_end ended) {
    struct flow told;
    if (!tracked || (!whats_new(tracked, &told) && !(ended && was_told(tracked)))) {
        return 0;
    }
    told.ended = ended;
    if (bpf_ringbuf_output(&events, &told, sizeof(told), BPF_RB_NO_WAKEUP)) {
        if (put_aside(tracked, ended)) {
            return 0;
        }
        LOSE(events, 1);
        struct rest_key rest = rest_of(told.executable, told.domain, told.protocol, told.direction);
        count_rest(&rest, &told.received, RECEIVED);
        count_rest(&rest, &told.sent, SENT);
    }
    mark_told(tracked, &told);
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
