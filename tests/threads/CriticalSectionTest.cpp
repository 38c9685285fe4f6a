// SPDX-License-Identifier: GPL-3.0-or-later
#include "threads/CriticalSection.h"

#include <gtest/gtest.h>

#include <string>
#include <thread>

#include "threads/CriticalSectionLock.h"

namespace {

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

TEST(CriticalSection, IsRecursiveAndNeedsAnExitPerEntry) {
    CriticalSection section;
    section.Lock(CriticalSection::Forever);
    section.Lock(CriticalSection::Forever);
    section.Unlock();
    EXPECT_EQ(textOfLockOnAnotherThread(section, 0), "Can't lock critical section");
    section.Unlock();
    EXPECT_EQ(textOfLockOnAnotherThread(section, 0), "");
}

TEST(CriticalSection, TimesOutInMillisecondsAndMicroseconds) {
    CriticalSection section;
    const CriticalSectionLock lock(section, CriticalSection::Forever);
    EXPECT_EQ(textOfLockOnAnotherThread(section, 20), "Can't lock critical section");
    EXPECT_EQ(textOfLockOnAnotherThread(section, -1500), "Can't lock critical section");
}

TEST(CriticalSection, RefusesAnExitWithoutAnEntry) {
#ifdef __SANITIZE_THREAD__
    GTEST_SKIP() << "ThreadSanitizer reports the misuse itself";
#endif
    CriticalSection section;
    EXPECT_EQ(thrownText([&] { section.Unlock(); }), "Can't unlock critical section");
}

}  // namespace
