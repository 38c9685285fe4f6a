// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <pthread.h>

/**
 * The front end's lock: recursive, each entry needs its own exit. Any thread.
 *
 * Failures are thrown as plain C strings (const char*): "Can't create critical section object",
 * "Can't lock critical section" (also when the time runs out) and "Can't unlock critical section" (also for a
 * thread that does not hold it).
 */
class CriticalSection {
  public:
    /** Waits without limit. */
    static constexpr long Forever = 0x7FFFFFFF;

    CriticalSection();
    ~CriticalSection();

    CriticalSection(const CriticalSection&) = delete;
    CriticalSection& operator=(const CriticalSection&) = delete;

    /** `timeout`: milliseconds when positive, microseconds when negative, 0 not at all, `Forever`. */
    void Lock(long timeout);
    void Unlock();

  private:
    pthread_mutex_t m_Mutex;
};
