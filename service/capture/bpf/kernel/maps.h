/* SPDX-License-Identifier: GPL-3.0-or-later */
/* Everything that outlives a call: the maps, and the variables that the daemon sets or reads. */
#pragma once

/** What a socket does with packets. */
enum socket_kind {
    KIND_STREAM = 1, /* TCP, connected or about to be: one flow, in place */
    KIND_LISTENER,   /* TCP: passes its storage on to the connections that it begets */
    KIND_DATAGRAM,   /* UDP and whatever has ports like it, and ping sockets: the first flow in place */
    KIND_RAW,        /* likewise, but it gets copies of packets that are meant for others */
    KIND_PACKET,     /* AF_PACKET: below IP, and nothing tells of its end */
    KIND_CONTROL,    /* the kernel's own, for replies and resets: no flows */
    KIND_MULTIPATH,  /* MPTCP: has no packets, but sockets below that do */
};

/** A process image: an id that is used again and an exec() both make another one. */
struct image {
    __u64 started; /* of its first thread, CLOCK_BOOTTIME in ns */
    __u32 process;
    __u32 execs;
};

/**
 * What is kept with a socket, and copied by the kernel to the sockets that a listener begets.
 *
 * The order is that of the processor's cache, whose line of 64 bytes begins 8 bytes before this, as the kernel
 * lays out the storage: what every packet and every call reads is in the first line, up to the flow's peer; what
 * is received is counted in the second one, what is sent in the third, since different processors do it.
 */
struct socket_state {
    __u8 kind; /* one of socket_kind; 0: not introduced yet */
    __u8 grade;
    __u8 direction;
    __u8 is_new; /* was seen before it moved anything */
    __u8 is_kernels;
    __u8 has_echo;
    __u16 echo; /* identifier of the echo requests that it sends, network order */
    struct image image;
    struct tracked_flow flow;
    __u64 id;     /* unique until the next start */
    __u64 parent; /* the listener whose handshake it has not taken over yet; else 0 */
    __u64 executable;
    __u64 received_before; /* TCP's own counts of payload, as far as the flow has them or is younger */
    __u64 sent_before;
    __u64 new_flows; /* since the latest reading of the tables */
};

struct {
    __uint(type, BPF_MAP_TYPE_SK_STORAGE);
    __uint(map_flags, BPF_F_NO_PREALLOC | BPF_F_CLONE);
    __type(key, int);
    __type(value, struct socket_state);
} sockets SEC(".maps");

/** The flows of sockets that talk to several peers. */
struct {
    __uint(type, BPF_MAP_TYPE_HASH);
    __uint(max_entries, MAX_FLOWS);
    __uint(map_flags, BPF_F_NO_PREALLOC);
    __type(key, struct flow_key);
    __type(value, struct tracked_flow);
} flows SEC(".maps");

struct {
    __uint(type, BPF_MAP_TYPE_HASH);
    __uint(max_entries, MAX_HANDSHAKES);
    __uint(map_flags, BPF_F_NO_PREALLOC);
    __type(key, struct handshake_key);
    __type(value, struct handshake);
} handshakes SEC(".maps");

/** Flows in the name only: they count what has no other place, for ever. */
struct {
    __uint(type, BPF_MAP_TYPE_HASH);
    __uint(max_entries, MAX_RESTS);
    __uint(map_flags, BPF_F_NO_PREALLOC);
    __type(key, struct rest_key);
    __type(value, struct tracked_flow);
} rests SEC(".maps");

/** Who had the flows that ended lately. */
struct past_key {
    __u32 netns;
    __u32 protocol;
    struct endpoints ends;
};

struct past {
    __u64 id;
    __u64 socket;
    __u64 executable;
    __u64 opened;
    __u64 ended;
    __u32 late; /* packets that came since */
    __u8 domain;
    __u8 type;
    __u8 direction;
    __u8 lingers;
};

struct {
    __uint(type, BPF_MAP_TYPE_LRU_HASH);
    __uint(max_entries, MAX_PASTS);
    __type(key, struct past_key);
    __type(value, struct past);
} pasts SEC(".maps");

struct {
    __uint(type, BPF_MAP_TYPE_HASH);
    __uint(max_entries, MAX_EXECUTABLES);
    __uint(map_flags, BPF_F_NO_PREALLOC);
    __type(key, __u64);
    __type(value, struct executable);
} executables SEC(".maps");

/** Spares the walk along the path of an image that is known. */
struct {
    __uint(type, BPF_MAP_TYPE_LRU_HASH);
    __uint(max_entries, 4096);
    __type(key, struct image);
    __type(value, __u64);
} images SEC(".maps");

/** Where a path is put together: too large for the stack. */
struct workbench {
    __u64 taken;
    struct executable executable;
};

/** Some for each processor, since a process may have to leave it to another one in the middle of its work. */
#define WORKBENCHES 4
struct {
    __uint(type, BPF_MAP_TYPE_PERCPU_ARRAY);
    __uint(max_entries, WORKBENCHES);
    __type(key, __u32);
    __type(value, struct workbench);
} workbenches SEC(".maps");

/** Flows that can't wait for the next reading of the tables: ends and late packets, some 13,000. */
struct {
    __uint(type, BPF_MAP_TYPE_RINGBUF);
    __uint(max_entries, 2 << 20);
} events SEC(".maps");

/** Who acts on MPTCP's sockets. */
struct multipath_key {
    __u64 address; /* the kernel's, of the socket */
    __u64 secret;  /* of the connection: another one may have the address later */
};

struct owner {
    struct image image;
    __u64 executable;
    __u64 grade;
};

struct {
    __uint(type, BPF_MAP_TYPE_LRU_HASH);
    __uint(max_entries, 4096);
    __type(key, struct multipath_key);
    __type(value, struct owner);
} multipath_owners SEC(".maps");

/** Local ports that were listened on when the capture began, and by what executable. */
struct port_key {
    __u32 netns;
    __u32 port;
};

struct {
    __uint(type, BPF_MAP_TYPE_HASH);
    __uint(max_entries, 16384);
    __uint(map_flags, BPF_F_NO_PREALLOC);
    __type(key, struct port_key);
    __type(value, __u64);
} listening SEC(".maps");

const volatile __u64 path_seed = 0; /* so that nobody can make a path with the hash of another */

__u32 scan_pass = SCAN_OWNERS;
__u32 is_last_reading = 0; /* of the tables: nothing can wait for another one */
__u64 next_id = 1;
__u64 machine_root = 0; /* a dentry's address; set before any hook is attached */
__u64 names = 0;        /* of entries in `executables`; the daemon counts down those that it takes out */
struct losses losses = {};
struct occupancy occupancy = {}; /* set to zero by the daemon before each reading */

static __always_inline __u64 new_id(void) {
    return __sync_fetch_and_add(&next_id, 1);
}

/** For conditions on the way that nearly every packet takes, whose code then stands in one piece. */
#define LIKELY(condition) __builtin_expect(!!(condition), 1)

#define LOSE(what, count) __sync_fetch_and_add(&losses.what, (count))
