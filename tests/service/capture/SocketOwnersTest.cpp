// SPDX-License-Identifier: GPL-3.0-or-later
#include "service/capture/SocketOwners.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>

#include "tests/service/capture/LoopbackPair.h"

namespace service {
namespace {

std::uint32_t inodeOf(int descriptor) {
    struct stat status {};
    EXPECT_EQ(::fstat(descriptor, &status), 0);
    return static_cast<std::uint32_t>(status.st_ino);
}

/** Runs a program with `socket` as its standard input; returns its process id once it runs. */
pid_t runWithSocket(const std::string& program, int socket) {
    int started[2];  // its writing end closes as the program starts
    EXPECT_EQ(::pipe2(started, O_CLOEXEC), 0);
    const pid_t child = ::fork();
    if (child == 0) {
        ::dup2(socket, STDIN_FILENO);
        ::execl(program.c_str(), program.c_str(), "60", nullptr);
        ::_exit(127);
    }
    ::close(started[1]);
    char none;
    EXPECT_EQ(::read(started[0], &none, 1), 0);
    ::close(started[0]);
    return child;
}

/** A path of this test's own among the temporary files. */
std::string temporaryPath(const std::string& ending) {
    return std::filesystem::temp_directory_path() / ("capture-test-" + std::to_string(::getpid()) + ending);
}

enum class File { Stays, Goes };

/** Who holds a socket that is in the hands of a program at `path` whose file stays or goes as it runs. */
ApplicationIdentity ownerFor(const std::string& path, File file) {
    LoopbackPair pair(AF_INET);
    const std::uint32_t inode = inodeOf(pair.server());
    std::filesystem::copy_file("/bin/sleep", path);
    const pid_t child = runWithSocket(path, pair.server());
    if (file == File::Goes) {
        std::filesystem::remove(path);
    }
    pair.closeServer();

    const auto found = SocketOwners().find({inode});
    ::kill(child, SIGKILL);
    ::waitpid(child, nullptr, 0);
    std::filesystem::remove(path);
    return found.contains(inode) ? *found.at(inode) : ApplicationIdentity{};
}

TEST(SocketOwners, NamesThisProcessOnceForAllItsSockets) {
    const LoopbackPair pair(AF_INET);
    SocketOwners owners;
    const auto found = owners.find({inodeOf(pair.client()), inodeOf(pair.server())});
    ASSERT_EQ(found.size(), 2U);
    const auto application = found.at(inodeOf(pair.client()));
    EXPECT_EQ(application->path, std::filesystem::read_symlink("/proc/self/exe"));
    EXPECT_EQ(application->name, std::filesystem::path(application->path).filename());
    EXPECT_EQ(application, found.at(inodeOf(pair.server())));
    EXPECT_EQ(application, owners.find({inodeOf(pair.client())}).at(inodeOf(pair.client())));
}

TEST(SocketOwners, NamesAnotherProgramByItsPathThoughItsFileIsGone) {
    const std::string path = temporaryPath("");
    const ApplicationIdentity owner = ownerFor(path, File::Goes);
    EXPECT_EQ(owner.path, path);
    EXPECT_EQ(owner.name, std::filesystem::path(path).filename());
}

TEST(SocketOwners, KeepsANameThatOnlyLooksLikeTheMarkOfAGoneFile) {
    const std::string path = temporaryPath(" (deleted)");
    EXPECT_EQ(ownerFor(path, File::Stays).path, path);
    EXPECT_EQ(ownerFor(path, File::Goes).path, path);
}

TEST(SocketOwners, MakesTextOfANameThatIsNone) {
    const ApplicationIdentity owner = ownerFor(temporaryPath("\xff\xc3z"), File::Stays);
    EXPECT_EQ(owner.path, temporaryPath("\uFFFD\uFFFDz"));
    EXPECT_EQ(owner.name, std::filesystem::path(owner.path).filename());
}

}  // namespace
}  // namespace service
