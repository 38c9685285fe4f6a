// SPDX-License-Identifier: GPL-3.0-or-later
#include "threads/CriticalSection.h"

#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <thread>

#include "threads/CriticalSectionLock.h"

namespace {

using namespace std::chrono_literals;

template <class Action>
std::string thrownText(Action action) {
    try {
        action();
    } catch (const char* text) {
        return text;
    }
    return "";
}

std::string textOfLockOnAnotherThread(CriticalSection& section, long timeout) {
    std::string text;
    std::thread([&] { text = thrownText([&] { const CriticalSectionLock lock(section, timeout); }); }).join();
    return text;
}

TEST(CriticalSection, TimesOutInMillisecondsAndMicroseconds) {
    CriticalSection section;
    const CriticalSectionLock lock(section, CriticalSection::Forever);
    const auto waitOf = [&](long timeout) {
        const auto start = std::chrono::steady_clock::now();
        EXPECT_EQ(textOfLockOnAnotherThread(section, timeout), "Can't lock critical section");
        return std::chrono::steady_clock::now() - start;
    };
    for (int i = 0; i < 3; ++i) {  // at moments spread over a second, whose end must not shorten the wait
        EXPECT_GE(waitOf(350), 340ms);
    }
    EXPECT_GE(waitOf(-1500), 1500us);
}

TEST(CriticalSection, LetsOthersInAfterAsManyExitsAsEntries) {
    CriticalSection section;
    section.Lock(CriticalSection::Forever);
    section.Lock(CriticalSection::Forever);
    section.Unlock();
    EXPECT_EQ(textOfLockOnAnotherThread(section, 0), "Can't lock critical section");
    std::thread waiting(
        [&] { EXPECT_EQ(thrownText([&] { const CriticalSectionLock lock(section, 60000); }), ""); });
    section.Unlock();
    waiting.join();
    EXPECT_EQ(textOfLockOnAnotherThread(section, 0), "") << "the guard before must have let go";
}

TEST(CriticalSection, RefusesAnExitWithoutAnEntry) {
#ifdef __SANITIZE_THREAD__
    GTEST_SKIP() << "ThreadSanitizer reports the misuse itself";
#endif
    CriticalSection section;
    EXPECT_EQ(thrownText([&] { section.Unlock(); }), "Can't unlock critical section");
}

}  // namespace
