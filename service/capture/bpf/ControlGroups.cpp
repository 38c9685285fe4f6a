// SPDX-License-Identifier: GPL-3.0-or-later
#include "service/capture/bpf/ControlGroups.h"

#include <fcntl.h>
#include <mntent.h>
#include <sys/stat.h>

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

}  // namespace

FileDescriptor openRootControlGroup(std::string& error) {
    const std::unique_ptr<std::FILE, MountsCloser> mounts(::setmntent("/proc/self/mounts", "re"));
    error = "no control groups of version 2 are mounted";
    while (const mntent* const mount = mounts ? ::getmntent(mounts.get()) : nullptr) {
        if (std::strcmp(mount->mnt_type, "cgroup2") != 0) {
            continue;
        }
        FileDescriptor group(::open(mount->mnt_dir, O_RDONLY | O_DIRECTORY | O_CLOEXEC));
        struct stat status {};
        if (group.isValid() && ::fstat(group.get(), &status) == 0 && status.st_ino == rootInode) {
            error.clear();
            return group;
        }
        error = "the root of the control groups is not to be seen from here";
    }
    return FileDescriptor();
}

}  // namespace service
