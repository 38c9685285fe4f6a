/* SPDX-License-Identifier: GPL-3.0-or-later */
/* Flows that have ended lately: packets that come after the end are still those of the last owner. */
#pragma once

/** Twice the time of TIME_WAIT. Whoever still sends then does not send to the last owner. */
#define MAX_PAST_NS (120 * 1000000000ull)

/** Of one flow, told one by one. The owner gets others without their ends, so that nobody fills the ring from outside. */
#define MAX_TOLD_LATE 16

static __always_inline void remember_past(const struct flow* flow, __u32 netns) {
    struct past_key key = {.netns = netns, .protocol = flow->protocol, .ends = flow->ends};
    struct past past = {
        .id = flow->id,
        .socket = flow->socket,
        .executable = flow->executable,
        .opened = flow->opened,
        .ended = bpf_ktime_get_ns(),
        .domain = flow->domain,
        .type = flow->type,
        .direction = flow->direction,
        .lingers = flow->lingers,
    };
    bpf_map_update_elem(&pasts, &key, &past, BPF_ANY);
}

static __always_inline struct past* find_past(const struct packet* packet, __u32 netns) {
    struct past_key key = {.netns = netns, .protocol = packet->protocol, .ends = packet->ends};
    struct past* past = bpf_map_lookup_elem(&pasts, &key);
    return past && bpf_ktime_get_ns() - past->ended < MAX_PAST_NS ? past : 0;
}

/** Tells of a packet that came too late for its flow. */
static __always_inline void tell_late(struct past* past, const struct packet* packet,
                                      const struct amount* amount, enum way way) {
    const int is_told = __sync_fetch_and_add(&past->late, 1) < MAX_TOLD_LATE;
    struct flow* late = is_told ? bpf_ringbuf_reserve(&events, sizeof(*late), 0) : 0;
    if (!late) {
        LOSE(events, is_told);
        struct rest_key rest = rest_of(past->executable, past->domain, packet->protocol, past->direction);
        count_rest(&rest, amount, way);
        return;
    }
    __builtin_memset(late, 0, sizeof(*late));
    late->id = past->id;
    late->socket = past->socket;
    late->executable = past->executable;
    late->opened = past->opened;
    late->ends = packet->ends;
    late->protocol = packet->protocol;
    late->domain = past->domain;
    late->type = past->type;
    late->grade = OWNER_SURE;
    late->direction = past->direction;
    late->ended = FLOW_LATE;
    *(way == SENT ? &late->sent : &late->received) = *amount;
    bpf_ringbuf_submit(late, BPF_RB_NO_WAKEUP);
}

static __always_inline __u16 domain_of(const struct packet* packet) {
    return packet->ends.version == 4 ? AF_INET : AF_INET6;
}

/** Counts a packet that belongs to no socket: for the last owner of its flow, else for the kernel. */
static __noinline int count_late_or_kernels(const struct packet* packet, __u32 netns,
                                            const struct amount* amount, enum way way) {
    if (!packet || !amount) {
        return 0;
    }
    struct past* past = find_past(packet, netns);
    if (past) {
        tell_late(past, packet, amount, way);
    } else {
        count_kernels(domain_of(packet), packet->protocol, amount, way);
    }
    return 0;
}
