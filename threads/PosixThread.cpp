// SPDX-License-Identifier: GPL-3.0-or-later
#include "threads/PosixThread.h"

#include <signal.h>

PosixThread::PosixThread(bool destroyOnFinish) : m_DestroyOnFinish(destroyOnFinish) {
    pthread_attr_init(&m_Attributes);
    pthread_attr_setdetachstate(&m_Attributes, PTHREAD_CREATE_JOINABLE);
}

PosixThread::~PosixThread() {
    join();
    pthread_attr_destroy(&m_Attributes);
}

void PosixThread::run() {
    if (m_IsRunning) {
        return;
    }
    join();
    const std::lock_guard starting(m_Starting);
    m_IsRunning = true;
    m_HasJoinable = pthread_create(&m_Joinable, &m_Attributes, &realEntryPoint, this) == 0;
    if (m_HasJoinable) {
        m_Handle = m_Joinable;
    } else {
        m_IsRunning = false;
    }
}

void* PosixThread::realEntryPoint(void* arg) {
    if (arg == nullptr) {
        return nullptr;
    }
    auto* self = static_cast<PosixThread*>(arg);
    { const std::lock_guard started(self->m_Starting); }
    self->entryPoint();
    const bool destroyOnFinish = self->m_DestroyOnFinish;
    self->m_Handle = pthread_t{};
    self->m_IsRunning = false;
    if (destroyOnFinish) {
        self->m_HasJoinable = false;
        pthread_detach(pthread_self());
        delete self;
    }
    return nullptr;
}

void PosixThread::waitForStop() {
    if (m_IsRunning) {
        join();
        m_Handle = pthread_t{};
    }
}

void PosixThread::kill(int signal) {
    if (m_IsRunning) {
        const pthread_t handle = m_Handle.exchange(pthread_t{});
        if (handle != pthread_t{}) {
            pthread_kill(handle, signal);
        }
    }
}

void PosixThread::join() {
    if (!m_HasJoinable || pthread_equal(m_Joinable, pthread_self()) != 0) {
        return;  // nothing to wait for, and a body cannot wait for itself
    }
    m_HasJoinable = false;
    pthread_join(m_Joinable, nullptr);
}
