// SPDX-License-Identifier: GPL-3.0-or-later
#include "threads/CriticalSectionLock.h"

CriticalSectionLock::CriticalSectionLock(CriticalSection& section, long timeout) : m_Section(section) {
    m_Section.Lock(timeout);
}

CriticalSectionLock::~CriticalSectionLock() noexcept(false) {
    m_Section.Unlock();
}
