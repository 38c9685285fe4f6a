// SPDX-License-Identifier: GPL-3.0-or-later
#include "threads/CriticalSection.h"

#include <algorithm>
#include <cerrno>
#include <ctime>

namespace {

constexpr long nanosecondsPerSecond = 1'000'000'000;

timespec deadlineAfter(long timeout) {
    const long long limited = std::clamp<long>(timeout, -CriticalSection::Forever, CriticalSection::Forever);
    const long long nanoseconds = limited > 0 ? limited * 1'000'000 : limited * -1'000;
    timespec deadline{};
    clock_gettime(CLOCK_REALTIME, &deadline);
    deadline.tv_sec += static_cast<time_t>(nanoseconds / nanosecondsPerSecond);
    deadline.tv_nsec += static_cast<long>(nanoseconds % nanosecondsPerSecond);
    if (deadline.tv_nsec >= nanosecondsPerSecond) {
        deadline.tv_nsec -= nanosecondsPerSecond;
        ++deadline.tv_sec;
    }
    return deadline;
}

#ifdef __APPLE__
/** macOS has no pthread_mutex_timedlock: try every millisecond until the deadline. */
int lockUntil(pthread_mutex_t* mutex, const timespec& deadline) {
    for (;;) {
        const int result = pthread_mutex_trylock(mutex);
        timespec now{};
        clock_gettime(CLOCK_REALTIME, &now);
        const bool isLate = now.tv_sec > deadline.tv_sec ||
                            (now.tv_sec == deadline.tv_sec && now.tv_nsec >= deadline.tv_nsec);
        if (result != EBUSY || isLate) {
            return result;
        }
        const timespec pause{0, 1'000'000};
        nanosleep(&pause, nullptr);
    }
}
#else
int lockUntil(pthread_mutex_t* mutex, const timespec& deadline) {
    return pthread_mutex_timedlock(mutex, &deadline);
}
#endif

int lockMutex(pthread_mutex_t* mutex, long timeout) {
    if (timeout == CriticalSection::Forever) {
        return pthread_mutex_lock(mutex);
    }
    if (timeout == 0) {
        return pthread_mutex_trylock(mutex);
    }
    return lockUntil(mutex, deadlineAfter(timeout));
}

}  // namespace

CriticalSection::CriticalSection() {
    pthread_mutexattr_t attributes;
    if (pthread_mutexattr_init(&attributes) != 0) {
        throw "Can't create critical section object";
    }
    pthread_mutexattr_settype(&attributes, PTHREAD_MUTEX_RECURSIVE);
    const int result = pthread_mutex_init(&m_Mutex, &attributes);
    pthread_mutexattr_destroy(&attributes);
    if (result != 0) {
        throw "Can't create critical section object";
    }
}

CriticalSection::~CriticalSection() {
    pthread_mutex_destroy(&m_Mutex);
}

void CriticalSection::Lock(long timeout) {
    if (lockMutex(&m_Mutex, timeout) != 0) {
        throw "Can't lock critical section";
    }
}

void CriticalSection::Unlock() {
    if (pthread_mutex_unlock(&m_Mutex) != 0) {
        throw "Can't unlock critical section";
    }
}
