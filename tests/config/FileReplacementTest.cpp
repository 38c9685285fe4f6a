// SPDX-License-Identifier: GPL-3.0-or-later
#include "config/FileReplacement.h"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>

#include "tests/support/TemporaryFolder.h"

namespace {

constexpr uid_t somebody = 65534;

struct stat statusOf(const std::string& path) {
    struct stat status {};
    EXPECT_EQ(lstat(path.c_str(), &status), 0);
    return status;
}

/** What `body`, which may do lasting things to its process, gives in one of its own. */
template <class Body>
int resultInAProcess(Body body) {
    const pid_t process = fork();
    if (process == 0) {
        _exit(body());
    }
    int status = -1;
    waitpid(process, &status, 0);
    return WEXITSTATUS(status);
}

TEST(FileReplacement, KeepsModeAndOwnerOfTheOldFile) {
    const TemporaryFolder folder;
    const std::string path = folder.write("f", "old");
    const bool isRoot = geteuid() == 0;
    ASSERT_EQ(isRoot ? chown(path.c_str(), somebody, somebody) : 0, 0);
    ASSERT_EQ(chmod(path.c_str(), 0640), 0);
    EXPECT_TRUE(config::replaceFile(path, "new"));
    EXPECT_EQ(folder.read("f"), "new");
    EXPECT_EQ(statusOf(path).st_mode & 07777U, 0640U);
    EXPECT_EQ(statusOf(path).st_uid, isRoot ? somebody : geteuid());
    EXPECT_EQ(folder.count(), 1U);

    umask(027);
    EXPECT_TRUE(config::replaceFile(folder.file("g"), "new"));
    EXPECT_EQ(statusOf(folder.file("g")).st_mode & 07777U, 0640U);
}

TEST(FileReplacement, LeavesTheOldFileAloneWhenTheDiskIsFull) {
    const TemporaryFolder folder;
    const std::string path = folder.write("f", "old");
    const int isReplaced = resultInAProcess([&path] {
        const rlimit limit{4096, 4096};  // a write beyond it comes up short, then fails
        std::signal(SIGXFSZ, SIG_IGN);
        return setrlimit(RLIMIT_FSIZE, &limit) != 0 || config::replaceFile(path, std::string(8192, 'x'));
    });
    EXPECT_FALSE(isReplaced);
    EXPECT_EQ(folder.read("f"), "old");
    EXPECT_EQ(folder.count(), 1U) << "the unfinished file is gone";
}

TEST(FileReplacement, FollowsLinksOfOurOwnOnlyAndLeavesThemLinks) {
    const TemporaryFolder folder;
    std::filesystem::create_directory(folder.file("d"));
    std::filesystem::create_symlink("d/second", folder.file("first"));
    std::filesystem::create_symlink("../target", folder.file("d/second"));
    EXPECT_TRUE(config::canReplaceFile(folder.file("first")));
    EXPECT_TRUE(config::replaceFile(folder.file("first"), "new")) << "also to where there is no file yet";
    EXPECT_EQ(folder.read("target"), "new");
    EXPECT_TRUE(std::filesystem::is_symlink(folder.file("first")));
    std::filesystem::create_symlink("loop", folder.file("loop"));
    EXPECT_FALSE(config::replaceFile(folder.file("loop"), "new"));
    if (geteuid() == 0) {
        ASSERT_EQ(lchown(folder.file("first").c_str(), somebody, somebody), 0);
        EXPECT_FALSE(config::canReplaceFile(folder.file("first")));
        EXPECT_FALSE(config::replaceFile(folder.file("first"), "newer"));
        EXPECT_EQ(folder.read("target"), "new");
    }
}

TEST(FileReplacement, RefusesFoldersAndPipes) {
    const TemporaryFolder folder;
    std::filesystem::create_directory(folder.file("d"));
    ASSERT_EQ(mkfifo(folder.file("pipe").c_str(), 0600), 0);
    for (const std::string name : {"d", "pipe", "d/none/f"}) {
        EXPECT_FALSE(config::replaceFile(folder.file(name), "new")) << name;
        EXPECT_FALSE(config::canReplaceFile(folder.file(name))) << name;
        EXPECT_EQ(config::readFile(folder.file(name)), std::nullopt) << name;
    }
    EXPECT_EQ(folder.count(), 2U);
}

TEST(FileReplacement, KnowsBeforehandWhatAnOrdinaryUserMayReplace) {
    const TemporaryFolder folder;
    folder.write("f", "old");
    const auto expectBoth = [&folder](const char* name, bool expected) {
        const int result = resultInAProcess([path = folder.file(name)] {
            const bool isOrdinary = geteuid() != 0 || setuid(somebody) == 0;
            const bool may = config::canReplaceFile(path);
            return 4 * !isOrdinary + 2 * may + config::replaceFile(path, "new");
        });
        EXPECT_EQ(result, expected ? 3 : 0) << name;
    };
    ASSERT_EQ(chmod(folder.path().c_str(), 0555), 0);
    expectBoth("f", false);
    ASSERT_EQ(chmod(folder.path().c_str(), 01777), 0);
    expectBoth("g", true);
    expectBoth("f", geteuid() != 0);  // sticky: only its owner
    ASSERT_EQ(chmod(folder.path().c_str(), 0777), 0);
    expectBoth("f", true);
}

}  // namespace
