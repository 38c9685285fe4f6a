// SPDX-License-Identifier: GPL-3.0-or-later
#include "service/capture/SocketOwners.h"

#include <dirent.h>
#include <fcntl.h>
#include <limits.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <optional>
#include <string_view>
#include <utility>

namespace service {

namespace {

constexpr std::size_t maxRecentProcesses = 16;

struct DirectoryCloser {
    void operator()(DIR* directory) const { ::closedir(directory); }
};
using Directory = std::unique_ptr<DIR, DirectoryCloser>;

/** The number in a descriptor's link text "socket:[number]"; nothing for any other descriptor. */
std::optional<std::uint32_t> socketInode(std::string_view link) {
    constexpr std::string_view prefix = "socket:[";
    std::uint32_t inode = 0;
    if (!link.starts_with(prefix) || !link.ends_with(']')) {
        return std::nullopt;
    }
    const char* const end = link.data() + link.size() - 1;
    const auto [stop, failed] = std::from_chars(link.data() + prefix.size(), end, inode);
    return stop == end && failed == std::errc() ? std::optional(inode) : std::nullopt;
}

bool isProcess(const dirent& entry) {
    return entry.d_name[0] >= '1' && entry.d_name[0] <= '9';
}

/** Whether both are there and lead to one file. */
bool isSameFile(const std::string& left, const std::string& right) {
    struct stat first {};
    struct stat second {};
    return ::stat(left.c_str(), &first) == 0 && ::stat(right.c_str(), &second) == 0 &&
           first.st_dev == second.st_dev && first.st_ino == second.st_ino;
}

/** The number in the link text "mnt:[number]" of a mount namespace; 0 where it is not to be seen. */
std::uint32_t mountNamespaceOf(const std::string& processFolder) {
    std::array<char, 64> link{};
    unsigned number = 0;
    const ssize_t length = ::readlink((processFolder + "/ns/mnt").c_str(), link.data(), link.size() - 1);
    return length > 0 && std::sscanf(link.data(), "mnt:[%u]", &number) == 1 ? number : 0;
}

/** What runs in a process; nothing when its executable is not to be seen or it has ended. */
std::optional<Program> programIn(const std::string& processFolder) {
    std::array<char, PATH_MAX> link;
    struct stat file {};
    const std::string executable = processFolder + "/exe";
    const ssize_t length = ::readlink(executable.c_str(), link.data(), link.size());
    if (length <= 0 || ::stat(executable.c_str(), &file) != 0) {
        return std::nullopt;
    }
    std::string path(link.data(), static_cast<std::size_t>(length));
    // The kernel's mark on an executable that was replaced, as by an update, while it runs.
    constexpr std::string_view deletedMark = " (deleted)";
    if (path.ends_with(deletedMark) && !isSameFile(path, executable)) {
        path.resize(path.size() - deletedMark.size());
    }
    const std::size_t number = processFolder.rfind('/') + 1;
    return Program{.path = std::move(path),
                   .process = static_cast<pid_t>(std::atoi(processFolder.c_str() + number)),
                   .device = file.st_dev,
                   .inode = file.st_ino,
                   .isApart = !isSameFile(processFolder + "/root", "/"),
                   .mountNamespace = mountNamespaceOf(processFolder)};
}

}  // namespace

SocketOwners::Owners SocketOwners::find(const Inodes& inodes) {
    Owners owners;
    for (const std::string& processFolder : std::vector(m_RecentProcesses)) {
        if (owners.size() < inodes.size()) {
            searchProcess(processFolder, inodes, owners);
        }
    }
    const Directory processes(::opendir("/proc"));
    while (processes && owners.size() < inodes.size()) {
        const dirent* const entry = ::readdir(processes.get());
        if (entry == nullptr) {
            break;
        }
        if (isProcess(*entry)) {
            searchProcess(std::string("/proc/") + entry->d_name, inodes, owners);
        }
    }
    return owners;
}

void SocketOwners::searchProcess(const std::string& processFolder, const Inodes& inodes, Owners& owners) {
    const Directory descriptors(::opendir((processFolder + "/fd").c_str()));
    if (!descriptors) {
        return;  // another user's, or ended meanwhile
    }
    std::shared_ptr<const ApplicationIdentity> application;
    while (const dirent* const entry = ::readdir(descriptors.get())) {
        std::array<char, 64> link;  // longer than any "socket:[4294967295]"; other links may be cut
        const ssize_t length =
            ::readlinkat(::dirfd(descriptors.get()), entry->d_name, link.data(), link.size());
        const auto inode =
            length > 0 ? socketInode({link.data(), static_cast<std::size_t>(length)}) : std::nullopt;
        if (!inode || !inodes.contains(*inode)) {
            continue;
        }
        if (!application) {
            application = applicationOf(processFolder);
        }
        if (application) {
            owners.try_emplace(*inode, application);
        }
    }
    if (application) {
        rememberProcess(processFolder);
    }
}

void SocketOwners::rememberProcess(const std::string& processFolder) {
    std::erase(m_RecentProcesses, processFolder);
    m_RecentProcesses.insert(m_RecentProcesses.begin(), processFolder);
    if (m_RecentProcesses.size() > maxRecentProcesses) {
        m_RecentProcesses.pop_back();
    }
}

std::shared_ptr<const ApplicationIdentity> SocketOwners::applicationOf(const std::string& processFolder) {
    const std::optional<Program> program = programIn(processFolder);
    return program ? m_Names.applicationAt(m_Names.find(*program)) : nullptr;
}

}  // namespace service
