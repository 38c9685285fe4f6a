// SPDX-License-Identifier: GPL-3.0-or-later
#include "service/capture/bpf/ControlGroups.h"

#include <fcntl.h>
#include <linux/magic.h>
#include <mntent.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/vfs.h>

#include <cstdio>
#include <cstring>
#include <memory>

namespace service {

namespace {

/** Of the root in the file system of the control groups; groups below get higher ones. */
constexpr ino_t rootInode = 1;

struct MountsCloser {
    void operator()(std::FILE* mounts) const { ::endmntent(mounts); }
};

/** Another file system may cover the mount, and its root may well have the same number. */
bool isRoot(const FileDescriptor& group) {
    struct statfs system {};
    struct stat status {};
    return group.isValid() && ::fstatfs(group.get(), &system) == 0 && system.f_type == CGROUP2_SUPER_MAGIC &&
           ::fstat(group.get(), &status) == 0 && status.st_ino == rootInode;
}

/** Where the control groups are mounted; invalid when that is nowhere to be seen, or only a part of them. */
FileDescriptor openMounted() {
    const std::unique_ptr<std::FILE, MountsCloser> mounts(::setmntent("/proc/self/mounts", "re"));
    while (const mntent* const mount = mounts ? ::getmntent(mounts.get()) : nullptr) {
        if (std::strcmp(mount->mnt_type, "cgroup2") != 0) {
            continue;
        }
        FileDescriptor group(::open(mount->mnt_dir, O_RDONLY | O_DIRECTORY | O_CLOEXEC));
        if (isRoot(group)) {
            return group;
        }
    }
    return FileDescriptor();
}

/** A mount that nobody else sees; it needs CAP_SYS_ADMIN. */
FileDescriptor mountForOneself() {
    const FileDescriptor context(::fsopen("cgroup2", FSOPEN_CLOEXEC));
    if (!context.isValid() || ::fsconfig(context.get(), FSCONFIG_CMD_CREATE, nullptr, nullptr, 0) != 0) {
        return FileDescriptor();
    }
    return FileDescriptor(::fsmount(context.get(), FSMOUNT_CLOEXEC, 0));
}

}  // namespace

FileDescriptor openRootControlGroup(std::string& error) {
    FileDescriptor group = openMounted();
    if (!group.isValid()) {
        group = mountForOneself();
    }
    if (!isRoot(group)) {
        error = "the root of the control groups (version 2) is not to be seen from here";
        return FileDescriptor();
    }
    return group;
}

}  // namespace service
