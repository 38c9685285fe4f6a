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

/** Takes bytes out of their place: no other processor gets them as well, and none are lost that it adds meanwhile. */
static __always_inline struct amount take(struct amount* place) {
    struct amount taken = {__sync_lock_test_and_set(&place->wire, 0),
                           __sync_lock_test_and_set(&place->payload, 0)};
    return taken;
}

static __always_inline int has_news(const struct flow* flow) {
    return (flow->received.wire | flow->received.payload | flow->sent.wire | flow->sent.payload) != 0;
}

/** Makes `told` a copy of a flow, and takes its bytes out of it. */
static __always_inline void take_news(struct flow* flow, struct flow* told) {
    *told = *flow;
    told->received = take(&flow->received);
    told->sent = take(&flow->sent);
}

static __always_inline void put_back(struct flow* flow, const struct flow* told) {
    add(&flow->received, &told->received);
    add(&flow->sent, &told->sent);
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

/** Puts payload back from `told` to its place, with its part of the headers. */
static __always_inline void leave_out(struct amount* told, __u64 payload, struct amount* place) {
    struct amount left_out = {.payload = payload < told->payload ? payload : told->payload};
    if (left_out.payload) {
        left_out.wire = (told->wire << 16) / told->payload * left_out.payload >> 16;
        told->wire -= left_out.wire;
        told->payload -= left_out.payload;
        add(place, &left_out);
    }
}

/**
 * Tells at once that a flow of an executable has ended, but for the bytes that are `foreign`. Where it can't, its
 * bytes go to the rest.
 */
static __noinline int tell_end(struct tracked_flow* tracked, __u64 executable,
                               const struct foreign* foreign) {
    struct flow told;
    if (!tracked || !foreign) {
        return 0;
    }
    take_news(&tracked->flow, &told);
    leave_out(&told.received, foreign->received, &tracked->flow.received);
    leave_out(&told.sent, foreign->sent, &tracked->flow.sent);
    if (!tracked->is_known && !has_news(&told)) {
        return 0;
    }
    told.executable = executable;
    told.ended = FLOW_ENDED;
    if (bpf_ringbuf_output(&events, &told, sizeof(told), BPF_RB_NO_WAKEUP) && !put_aside(&told)) {
        LOSE(events, 1);
        struct rest_key rest = rest_of(told.executable, told.domain, told.protocol, told.direction);
        count_rest(&rest, &told.received, RECEIVED);
        count_rest(&rest, &told.sent, SENT);
    }
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
    const __u64 before = tracked->flow.executable;
    const int was_owned = tracked->flow.grade == OWNER_SURE || tracked->is_known;
    tracked->flow.grade = grade;
    if (before == executable ||
        __sync_val_compare_and_swap(&tracked->flow.executable, before, executable) != before) {
        return 0;
    }
    if (was_owned) {  // else what was not told was the new owner's all the time
        tell_end(tracked, before, foreign);
        tracked->flow.opened = bpf_ktime_get_boot_ns();
        tracked->flow.id = new_id();
        tracked->is_known = 0;
        tracked->waited = 0;
    }
    return 0;
}

/** Makes room for another flow where one has ended. Its counts stay: somebody may be adding to them. */
static __always_inline void free_place(struct tracked_flow* tracked) {
    tracked->quiet = 0;
    tracked->waited = 0;
    tracked->is_known = 0;
    tracked->flow.ended = FLOW_LIVES;
    tracked->flow.lingers = 0;
    barrier();
    tracked->flow.id = 0;
    tracked->flow.opened = 0;
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
