// SPDX-License-Identifier: GPL-3.0-or-later
#include <sched.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include "tests/capture/generator/Generator.h"

namespace traffic {

namespace {

/** The arguments again, for the mode that "mode" names. */
std::vector<std::string> wordsForMode(const Arguments& arguments) {
    std::vector<std::string> words = arguments.words();
    words.insert(words.begin(), arguments.text("mode"));
    return words;
}

}  // namespace

/** Becomes "program" in a container: with a root of its own, an overlay over the system's files. */
void container(const Arguments& arguments) {
    check(::unshare(CLONE_NEWNS), "unshare");
    check(::mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr), "keep mounts private");
    check(::mount("container", "/mnt", "tmpfs", 0, nullptr), "mount a tmpfs");
    for (const char* const folder : {"/mnt/upper", "/mnt/work", "/mnt/root"}) {
        check(::mkdir(folder, 0755), folder);
    }
    const char* const layers = "lowerdir=/,upperdir=/mnt/upper,workdir=/mnt/work";
    check(::mount("container", "/mnt/root", "overlay", 0, layers), "mount an overlay");
    check(::chdir("/mnt/root"), "chdir");
    check(::syscall(SYS_pivot_root, ".", "."), "pivot_root");
    check(::umount2(".", MNT_DETACH), "umount");
    check(::mount("proc", "/proc", "proc", 0, nullptr), "mount /proc");
    become(arguments.text("program"), wordsForMode(arguments));
}

/**
 * "processes" short-lived ones, "together" at a time, each of which does what the rest of the arguments say in
 * "mode" with "program". Uses no socket itself.
 */
void storm(const Arguments& arguments) {
    const std::vector<std::string> words = wordsForMode(arguments);
    std::uint64_t running = 0;
    bool succeeded = true;
    const auto waitForOne = [&] {
        int status = 0;
        check(::wait(&status), "wait");
        succeeded = succeeded && status == 0;
        --running;
    };
    for (std::uint64_t i = 0; i < arguments.number("processes"); ++i) {
        if (running == arguments.number("together", 8)) {
            waitForOne();
        }
        ++running;
        if (check(::fork(), "fork") == 0) {
            become(arguments.text("program"), words);
        }
    }
    while (running > 0) {
        waitForOne();
    }
    if (!succeeded) {
        std::_Exit(1);
    }
}

}  // namespace traffic
