/* SPDX-License-Identifier: GPL-3.0-or-later */
/*
 * The kernel's own types, cut down to what is read of them. Where a field lies is put right when the programs
 * are loaded, for the kernel that runs (preserve_access_index): the order and the gaps here mean nothing, and
 * no kernel is needed to build.
 */
#pragma once

#include <linux/types.h>

#pragma clang attribute push(__attribute__((preserve_access_index)), apply_to = record)

struct qstr {
    const unsigned char* name;
};

struct super_block {
    __u32 s_dev;
};

struct inode {
    unsigned long i_ino;
};

struct dentry {
    struct dentry* d_parent;
    struct qstr d_name;
    struct inode* d_inode;
    struct super_block* d_sb;
};

struct vfsmount {
    struct dentry* mnt_root;
};

struct mount {
    struct mount* mnt_parent;
    struct dentry* mnt_mountpoint;
    struct vfsmount mnt;
};

struct path {
    struct vfsmount* mnt;
    struct dentry* dentry;
};

struct file {
    struct path f_path;
};

struct fs_struct {
    struct path root;
};

struct mm_struct {
    struct file* exe_file;
};

struct ns_common {
    unsigned int inum;
    __u64 ns_id; /* from Linux 6.18 on */
};

struct mnt_namespace {
    struct ns_common ns;
    __u64 seq; /* before */
};

struct nsproxy {
    struct mnt_namespace* mnt_ns;
};

struct task_struct {
    unsigned int flags;
    int tgid;
    __u64 self_exec_id;
    __u64 start_boottime;
    struct task_struct* group_leader;
    struct mm_struct* mm;
    struct fs_struct* fs;
    struct nsproxy* nsproxy;
};

struct net {
    struct ns_common ns;
};

typedef struct {
    struct net* net;
} possible_net_t;

struct in6_addr {
    union {
        __u8 u6_addr8[16];
    } in6_u;
};

struct sock_common {
    __be32 skc_daddr;
    __be32 skc_rcv_saddr;
    __be16 skc_dport;
    __u16 skc_num;
    unsigned short skc_family;
    volatile unsigned char skc_state;
    unsigned long skc_flags;
    possible_net_t skc_net;
    struct in6_addr skc_v6_daddr;
    struct in6_addr skc_v6_rcv_saddr;
};

struct sock {
    struct sock_common __sk_common;
    __u8 sk_kern_sock : 1;
    __u16 sk_type;
    __u16 sk_protocol;
};

struct tcp_sock {
    __u64 bytes_received;
    __u64 bytes_sent;
    __u64 bytes_retrans;
    __u64 bytes_acked;
    __u32 snd_nxt;
    __u32 snd_una;
    __u32 write_seq;
    __u32 rcv_nxt;
    __u32 copied_seq;
    _Bool is_mptcp;
};

struct inet_connection_sock {
    void* icsk_ulp_data;
};

struct mptcp_subflow_context {
    struct sock* conn;
};

struct mptcp_sock {
    __u64 local_key;
};

struct socket {
    struct sock* sk;
};

struct list_head {
    struct list_head* next;
};

struct adjacent_devices {
    struct list_head lower;
};

struct net_device {
    unsigned int mtu;
    int ifindex;
    struct adjacent_devices adj_list;
    possible_net_t nd_net;
};

struct sk_buff {
    struct net_device* dev;
    struct sock* sk;
    char cb[48];
    unsigned int len;
    unsigned int data_len;
    int skb_iif;
    __be16 protocol;
    __u16 network_header;
    unsigned char* head;
    unsigned char* data;
};

struct iphdr {
    __u8 protocol;
};

struct ipv6hdr {
    __u8 nexthdr;
};

struct inet_skb_parm {
    __u16 frag_max_size;
};

struct inet6_skb_parm {
    __u16 frag_max_size;
};

struct seq_file;

struct bpf_iter_meta {
    struct seq_file* seq;
};

struct bpf_iter__bpf_sk_storage_map {
    struct bpf_iter_meta* meta;
    struct bpf_map* map;
    struct sock* sk;
    void* value;
};

struct bpf_iter__bpf_map_elem {
    struct bpf_iter_meta* meta;
    struct bpf_map* map;
    void* key;
    void* value;
};

struct bpf_iter__task_file {
    struct bpf_iter_meta* meta;
    struct task_struct* task;
    __u32 fd;
    struct file* file;
};

enum sock_flags {
    SOCK_DONE,
};

enum skb_drop_reason {
    SKB_DROP_REASON_NOT_SPECIFIED,
    SKB_DROP_REASON_NO_SOCKET,
};

#pragma clang attribute pop
