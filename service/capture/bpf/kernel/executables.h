/* SPDX-License-Identifier: GPL-3.0-or-later */
/*
 * Which file a process runs: the path is walked here, because the process may be gone before anyone else
 * looks.
 */
#pragma once

#define PF_KTHREAD 0x00200000

/** As many folders as PATH_BYTES hold when names are short, and some mounts. */
#define MAX_STEPS 256

struct path_walk {
    struct dentry* dentry;
    struct mount* mount;
    struct dentry* root; /* of the process: where its paths begin */
    struct mount* root_mount;
    __u32 bench;
    __u32 length;
};

static __always_inline struct mount* mount_around(struct vfsmount* inner) {
    return (void*)inner - bpf_core_field_offset(struct mount, mnt);
}

static __always_inline struct executable* executable_on(__u32 bench) {
    struct workbench* workbench = bpf_map_lookup_elem(&workbenches, &bench);
    return workbench ? &workbench->executable : 0;
}

/** One name or one mount towards the root; 1 at the end. */
static long step_up(__u32 step, struct path_walk* walk) {
    struct dentry* dentry = walk->dentry;
    struct mount* mount = walk->mount;
    if (dentry == walk->root && mount == walk->root_mount) {
        return 1;
    }
    if (dentry == BPF_CORE_READ(mount, mnt.mnt_root)) {
        struct mount* above = BPF_CORE_READ(mount, mnt_parent);
        walk->dentry = BPF_CORE_READ(mount, mnt_mountpoint);
        walk->mount = above;
        return above == mount;
    }
    struct dentry* parent = BPF_CORE_READ(dentry, d_parent);
    struct executable* out = executable_on(walk->bench);
    if (!out || walk->length >= PATH_BYTES) {
        return 1;
    }
    long copied = bpf_probe_read_kernel_str(&out->path[walk->length & (PATH_BYTES - 1)], COMPONENT_BYTES,
                                            BPF_CORE_READ(dentry, d_name.name));
    if (copied <= 0) {
        return 1;
    }
    walk->length += copied;
    walk->dentry = parent;
    return dentry == parent;  // a root without a tree, as of a memfd: its name is all there is
}

/** Puts the names on the workbench and returns how many bytes they take. */
static __always_inline __u32 walk_path(struct task_struct* task, struct file* file, __u32 bench) {
    struct path_walk walk = {
        .dentry = BPF_CORE_READ(file, f_path.dentry),
        .mount = mount_around(BPF_CORE_READ(file, f_path.mnt)),
        .root = BPF_CORE_READ(task, fs, root.dentry),
        .root_mount = mount_around(BPF_CORE_READ(task, fs, root.mnt)),
        .bench = bench,
    };
    bpf_loop(MAX_STEPS, step_up, &walk, 0);
    return walk.length;
}

struct path_hash {
    __u64 hash;
    __u32 bench;
};

static long hash_word(__u32 index, struct path_hash* hashing) {
    struct executable* out = executable_on(hashing->bench);
    if (!out) {
        return 1;
    }
    __u64 word = *(__u64*)&out->path[(index * sizeof(word)) & (PATH_BYTES - 1)];
    hashing->hash = (hashing->hash ^ word) * 0x9E3779B97F4A7C15ull;  // 2^64 divided by the golden ratio
    hashing->hash ^= hashing->hash >> 29;
    return 0;
}

static __always_inline __u64 hash_path(struct executable* out, __u32 bench) {
    const __u64 zero = 0;
    struct path_hash hashing = {
        .hash = path_seed ^ (out->root << 32 | out->length),
        .bench = bench,
    };
    const __u32 length = out->length < PATH_BYTES ? out->length : PATH_BYTES;
    bpf_probe_read_kernel(&out->path[length & (2 * PATH_BYTES - 1)], sizeof(zero),
                          &zero);  // fills the last word
    bpf_loop((length + sizeof(zero) - 1) / sizeof(zero), hash_word, &hashing, 0);
    return hashing.hash < EXECUTABLE_FIRST ? EXECUTABLE_FIRST : hashing.hash;
}

static __always_inline void image_of(struct task_struct* task, struct image* image) {
    image->process = task->tgid;
    image->execs = task->self_exec_id;
    image->started = task->group_leader->start_boottime;
}

static __always_inline __u64 lasting_number(struct mnt_namespace* mounts) {
    return bpf_core_field_exists(mounts->ns.ns_id) ? BPF_CORE_READ(mounts, ns.ns_id)
                                                   : BPF_CORE_READ(mounts, seq);
}

/**
 * Where paths of `task` begin: of a service with a /tmp of its own at the machine's root all the same, of a
 * container elsewhere.
 */
static __always_inline __u64 root_of(struct task_struct* task) {
    struct dentry* root = BPF_CORE_READ(task, fs, root.dentry);
    return (__u64)root == machine_root ? 0 : lasting_number(BPF_CORE_READ(task, nsproxy, mnt_ns));
}

/** Run once by the daemon, whose root is the machine's. */
SEC("syscall")
int note_root(void* context) {
    machine_root = (__u64)BPF_CORE_READ(bpf_get_current_task_btf(), fs, root.dentry);
    return 0;
}

/** Finds out what `task` runs, keeps it in `executables` and returns its key there. */
static __always_inline __u64 keep_executable(struct task_struct* task, struct file* file,
                                             struct executable* out, __u32 bench) {
    out->process = BPF_CORE_READ(task, tgid);
    out->mount_namespace = BPF_CORE_READ(task, nsproxy, mnt_ns, ns.inum);
    out->root = root_of(task);
    out->inode = BPF_CORE_READ(file, f_path.dentry, d_inode, i_ino);
    out->device = BPF_CORE_READ(file, f_path.dentry, d_sb, s_dev);
    out->length = walk_path(task, file, bench);
    __u64 hash = hash_path(out, bench);
    if (bpf_map_lookup_elem(&executables, &hash)) {
        return hash;
    }
    const long failure = bpf_map_update_elem(&executables, &hash, out, BPF_NOEXIST);
    if (failure && failure != -EEXIST) {
        LOSE(executables, 1);
        return EXECUTABLE_UNKNOWN;
    }
    __sync_fetch_and_add(&names, !failure);
    return hash;
}

/** The number of a workbench that nobody stands at, for oneself; WORKBENCHES when there is none. */
static __always_inline __u32 take_workbench(void) {
    for (__u32 bench = 0; bench < WORKBENCHES; ++bench) {
        __u32 key = bench;
        struct workbench* workbench = bpf_map_lookup_elem(&workbenches, &key);
        if (workbench && !__sync_lock_test_and_set(&workbench->taken, 1)) {
            return bench;
        }
    }
    return WORKBENCHES;
}

/** The key of what `task` runs; EXECUTABLE_UNKNOWN when it runs nothing any more, for it is ending. */
static __noinline __u64 name_executable(struct task_struct* task) {
    struct file* file = BPF_CORE_READ(task, mm, exe_file);
    if (!file) {
        return BPF_CORE_READ(task, flags) & PF_KTHREAD ? EXECUTABLE_KERNEL : EXECUTABLE_UNKNOWN;
    }
    __u32 bench = take_workbench();
    struct workbench* workbench = bpf_map_lookup_elem(&workbenches, &bench);
    if (!workbench) {
        LOSE(executables, 1);
        return EXECUTABLE_UNKNOWN;
    }
    __u64 executable = keep_executable(task, file, &workbench->executable, bench);
    workbench->taken = 0;
    return executable;
}

/** The executable of the process that runs now. */
static __always_inline __u64 current_executable(const struct image* image) {
    __u64* known = bpf_map_lookup_elem(&images, image);
    if (known) {
        return *known;
    }
    __u64 executable = name_executable(bpf_get_current_task_btf());
    if (executable != EXECUTABLE_UNKNOWN) {
        bpf_map_update_elem(&images, image, &executable, BPF_ANY);
    }
    return executable;
}
