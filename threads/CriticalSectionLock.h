// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "threads/CriticalSection.h"

/** Holds a `CriticalSection`, which must outlive it, for the length of a scope. */
class CriticalSectionLock {
  public:
    /** Locks; throws as `CriticalSection::Lock` does. */
    CriticalSectionLock(CriticalSection& section, long timeout);

    /** Unlocks; throws as `CriticalSection::Unlock` does. */
    ~CriticalSectionLock() noexcept(false);

    CriticalSectionLock(const CriticalSectionLock&) = delete;
    CriticalSectionLock& operator=(const CriticalSectionLock&) = delete;

  private:
    CriticalSection& m_Section;
};
