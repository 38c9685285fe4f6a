// SPDX-License-Identifier: GPL-3.0-or-later
#include "config/FileReplacement.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <random>
#include <system_error>

namespace config {

namespace {

namespace fs = std::filesystem;

constexpr int maxLinks = 40;  // as many as the kernel follows
constexpr mode_t newFileMode = 0666;
constexpr mode_t privateFileMode = 0600;  // until it takes over the old one's
constexpr mode_t permissionBits = 0777;   // never the right to run as somebody else

class Descriptor {
  public:
    explicit Descriptor(int descriptor) : m_Descriptor(descriptor) {}
    ~Descriptor() {
        if (m_Descriptor >= 0) {
            close(m_Descriptor);
        }
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    bool isOpen() const { return m_Descriptor >= 0; }
    int get() const { return m_Descriptor; }

  private:
    int m_Descriptor;
};

bool readAll(int file, std::string& contents) {
    std::array<char, 16384> block;
    while (contents.size() <= maxFileBytes) {
        const ssize_t count = read(file, block.data(), block.size());
        if (count == 0 || (count < 0 && errno != EINTR)) {
            return count == 0;
        }
        contents.append(block.data(), count > 0 ? static_cast<std::size_t>(count) : 0);
    }
    return true;
}

bool writeAll(int file, std::string_view contents) {
    while (!contents.empty()) {
        const ssize_t count = write(file, contents.data(), contents.size());
        if (count < 0 && errno != EINTR) {
            return false;
        }
        contents.remove_prefix(count > 0 ? static_cast<std::size_t>(count) : 0);
    }
    return true;
}

/** Where `path` leads in the end, which need not be there; nothing when a link on the way is not to be followed. */
std::optional<fs::path> targetOf(const std::string& path) {
    fs::path target = path;
    for (int i = 0; i < maxLinks; ++i) {
        struct stat status {};
        if (lstat(target.c_str(), &status) != 0 || !S_ISLNK(status.st_mode)) {
            return target;
        }
        std::error_code error;
        const fs::path next = fs::read_symlink(target, error);
        if (error || (status.st_uid != geteuid() && status.st_uid != 0)) {
            return std::nullopt;
        }
        target = target.parent_path() / next;
    }
    return std::nullopt;
}

std::string folderOf(const fs::path& target) {
    return target.has_parent_path() ? target.parent_path().string() : ".";
}

Descriptor openFolder(const fs::path& target) {
    return Descriptor(open(folderOf(target).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
}

/** The file that is replaced; nothing when there is none yet. */
std::optional<struct stat> oldFile(int folder, const std::string& name) {
    struct stat status {};
    return fstatat(folder, name.c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0 ? std::optional(status)
                                                                            : std::nullopt;
}

/** Owner first: a change of owner takes mode bits away. */
bool takeOver(int file, const struct stat& old) {
    if (fchown(file, old.st_uid, old.st_gid) != 0 && fchown(file, static_cast<uid_t>(-1), old.st_gid) != 0) {
        // Not ours to give away: the file becomes this user's.
    }
    return fchmod(file, old.st_mode & permissionBits) == 0;
}

bool fill(int file, const std::optional<struct stat>& old, std::string_view contents) {
    return writeAll(file, contents) && (!old || takeOver(file, *old)) && fsync(file) == 0;
}

/** Whether even its owner and root may not give another file its name: it is immutable, or something is mounted there. */
bool isFixed(const std::string& path) {
#ifdef __linux__
    struct statx status {};
    constexpr std::uint64_t marks = STATX_ATTR_IMMUTABLE | STATX_ATTR_APPEND | STATX_ATTR_MOUNT_ROOT;
    return statx(AT_FDCWD, path.c_str(), AT_SYMLINK_NOFOLLOW, STATX_TYPE, &status) == 0 &&
           (status.stx_attributes & marks) != 0;
#else
    static_cast<void>(path);
    return false;
#endif
}

std::string temporaryName() {
    std::random_device random;
    std::array<char, 32> name{};
    std::snprintf(name.data(), name.size(), ".settings-%08x%08x.tmp", random(), random());
    return name.data();
}

}  // namespace

std::optional<std::string> readFile(const std::string& path) {
    const Descriptor file(
        open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));  // a pipe would wait for a writer
    struct stat status {};
    if (!file.isOpen() || fstat(file.get(), &status) != 0 || !S_ISREG(status.st_mode)) {
        return std::nullopt;
    }
    std::string contents;
    return readAll(file.get(), contents) ? std::optional(std::move(contents)) : std::nullopt;
}

bool replaceFile(const std::string& path, std::string_view contents) {
    const auto target = targetOf(path);
    if (!target) {
        return false;
    }
    const Descriptor folder = openFolder(*target);
    const std::string name = target->filename();
    const std::string temporary = temporaryName();
    const auto old = oldFile(folder.get(), name);
    const Descriptor file(openat(folder.get(), temporary.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC,
                                 old ? privateFileMode : newFileMode));
    if (!file.isOpen()) {
        return false;
    }
    if ((old && !S_ISREG(old->st_mode)) || !fill(file.get(), old, contents) ||
        renameat(folder.get(), temporary.c_str(), folder.get(), name.c_str()) != 0) {
        unlinkat(folder.get(), temporary.c_str(), 0);
        return false;
    }
    fsync(folder.get());  // the new file has its name whether or not this succeeds
    return true;
}

bool canReplaceFile(const std::string& path) {
    const auto target = targetOf(path);
    struct stat folder {};
    if (path.empty() || !target || stat(folderOf(*target).c_str(), &folder) != 0 ||
        faccessat(AT_FDCWD, folderOf(*target).c_str(), R_OK | W_OK | X_OK, AT_EACCESS) != 0) {
        return false;
    }
    const auto old = oldFile(AT_FDCWD, target->string());
    const uid_t user = geteuid();
    const bool isProtected = (folder.st_mode & S_ISVTX) != 0 && user != 0 && folder.st_uid != user;
    return !old ||
           (S_ISREG(old->st_mode) && (!isProtected || old->st_uid == user) && !isFixed(target->string()));
}

}  // namespace config
