/* SPDX-License-Identifier: GPL-3.0-or-later */
/*
 * What the programs in the kernel and the daemon tell each other: structs of fixed width in host byte order,
 * plain C. Addresses are in network order, an IPv4 address in the first four of sixteen bytes; ports are in
 * host order; moments are nanoseconds of CLOCK_BOOTTIME.
 */
#pragma once

#include <linux/types.h>

/** Executables that are no file. Every other number is the hash of a path. */
enum {
    EXECUTABLE_UNKNOWN = 0, /* no process was ever seen with the socket */
    EXECUTABLE_KERNEL = 1,
    EXECUTABLE_FIRST = 2,
};

/** How well a socket's owner is known; a better grade is the larger number. */
enum owner_grade {
    OWNER_UNKNOWN = 0,
    OWNER_LIKELY = 1, /* made the socket, or inherited it */
    OWNER_SURE = 2,   /* moved bytes over it */
};

/** On the wire of the link: never renumber. */
enum flow_direction {
    DIRECTION_INPUT = 0,
    DIRECTION_OUTPUT = 1,
    DIRECTION_UNDEFINED = 2,
};

enum flow_end {
    FLOW_LIVES = 0,
    FLOW_ENDED = 1,
    FLOW_LATE = 2, /* it ended before; these are packets that were late for it */
};

enum {
    COMPONENT_BYTES = 256, /* the longest file name, with its NUL */
    PATH_BYTES = 1024,     /* of a path; what is longer loses its front, the folders next to the root */
    MAX_FLOWS = 65536,     /* entries of the tables */
    MAX_HANDSHAKES = 16384,
    MAX_RESTS = 4096,
    MAX_PASTS = 32768,
    MAX_EXECUTABLES = 16384,
    SCAN_OWNERS = 0, /* passes over the sockets that are older than the capture */
    SCAN_DIRECTIONS = 1,
};

/** Bytes one way. */
struct amount {
    __u64 wire;    /* IP header and up, as if every segment had left alone */
    __u64 payload; /* what the program gave or got */
};

/** Who is at either end. What a packet is compared with comes first. */
struct endpoints {
    __u8 remote[16];
    __u16 remote_port;
    __u16 local_port;
    __u32 version; /* the packets': 4 or 6; 0: no single peer */
    __u8 local[16];
} __attribute__((aligned(8)));

/** A TCP connection, or what a socket exchanges with one peer. */
struct flow {
    __u64 id; /* unique until the next start; 0: there is no flow in this place */
    struct endpoints ends;
    __u64 socket; /* unique likewise; 0: none, the flow stands for the rest of an executable's traffic */
    __u64 executable;
    __u64 opened;
    __u16 protocol;
    __u8 domain; /* the socket's: AF_INET or AF_INET6 */
    __u8 type;   /* SOCK_STREAM, ... */
    __u8 grade;
    __u8 direction;
    __u8 ended;             /* one of flow_end */
    __u8 lingers;           /* packets may still come after its end */
    struct amount received; /* since the daemon was told of it, which takes them out of here */
    struct amount sent;
};

/** A flow in its place in the kernel. */
struct tracked_flow {
    struct flow flow;
    __u32 quiet;    /* readings of the tables in a row that found nothing new */
    __u16 waited;   /* readings that left it out because its owner was not sure yet */
    __u16 is_known; /* to the daemon, by its id */
};

/** Where a flow is kept whose socket has others besides. */
struct flow_key {
    __u64 socket;
    __u8 remote[16];
    __u16 remote_port;
    __u16 protocol;
    __u32 version;
};

/** How full the tables are, as of the latest reading. */
struct occupancy {
    __u64 sockets;
    __u64 flows;
    __u64 handshakes;
    __u64 rests;
};

/** Traffic of an executable that belongs to no flow that can be kept. */
struct rest_key {
    __u64 executable;
    __u16 protocol;
    __u16 domain;
    __u32 direction;
};

/** Packets that reached a listening socket: they belong to a connection that does not exist yet. */
struct handshake_key {
    __u64 listener;
    __u8 local[16];
    __u8 remote[16];
    __u16 remote_port;
    __u16 unused[3];
};

/** What tells a packet from another one. */
struct seen_packet {
    __u64 place; /* in the kernel's memory */
    __u32 length;
    __u32 flags;
};

struct handshake {
    __u64 executable; /* the listener's */
    __u64 opened;
    struct amount received;
    struct amount sent;
    struct seen_packet seen[2]; /* the latest, and the one before */
    __u16 domain;
    __u16 unused[3];
};

/** A program's file, kept under the hash of its path and of where that path begins. */
struct executable {
    __u64 root;            /* 0: the machine's root; else the mount namespace, by a number never used again */
    __u64 inode;           /* of the file */
    __u32 device;          /* likewise, as the kernel writes it: 12 bits and 20 */
    __u32 mount_namespace; /* as /proc numbers it */
    __u32 process;         /* one that ran it */
    __u32 length;          /* of `path` in use */
    char path[PATH_BYTES + COMPONENT_BYTES]; /* names, the file's own first, each with its NUL */
};

/** What went wrong in the kernel since the start. Every field is a count. */
struct losses {
    __u64 sockets;     /* packets of sockets that no memory was to be had for; their bytes are in `bytes` */
    __u64 flows;       /* packets for whose flow there was no room: their bytes stay with the executable */
    __u64 handshakes;  /* likewise, for a connection that does not exist yet */
    __u64 events;      /* flows whose end could not be told: likewise */
    __u64 executables; /* whose path could not be kept */
    __u64 strangers;   /* sockets that no process was seen with, and not the kernel's: older, and given up */
    __u64 packets;     /* with headers that make no sense; in no count */
    __u64 bytes;       /* wire bytes that are in no count at all */
};
