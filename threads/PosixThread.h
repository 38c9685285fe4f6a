// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <pthread.h>

#include <atomic>
#include <mutex>

/**
 * A thread whose body is a virtual operation of a subclass. It can be started again after its body has
 * returned.
 *
 * `run`, `waitForStop`, `kill` and the destructor belong to the owning thread. A subclass's destructor must
 * make its body return and wait for it: when this class's destructor runs, the body's object is already half
 * gone.
 */
class PosixThread {
  public:
    /**
     * `destroyOnFinish`: the object, made with new, deletes itself after its body has returned. Nobody may touch
     * such an object once it runs.
     */
    explicit PosixThread(bool destroyOnFinish);

    /** Waits for the body to return. */
    virtual ~PosixThread();

    /** The thread's body. */
    virtual void entryPoint() = 0;

    PosixThread(const PosixThread&) = delete;
    PosixThread& operator=(const PosixThread&) = delete;

    /** Starts the thread unless it runs. Reports nothing: a thread that could not be made leaves the object
     * idle. */
    void run();

    /** True from `run` until the body has returned. */
    bool isRunned() const { return m_IsRunning; }

    /** Blocks until the body has returned; returns at once when there is nothing to wait for. */
    void waitForStop();

    /** Sends a signal to the running thread. It runs on (`isRunned`) until its body returns. */
    void kill(int signal);

    /** Where the new thread starts; `arg` is the object, null is ignored. */
    static void* realEntryPoint(void* arg);

  private:
    void join();

    std::atomic<pthread_t> m_Handle{};  ///< 0 when none runs
    pthread_attr_t m_Attributes;
    std::atomic<bool> m_IsRunning{false};
    const bool m_DestroyOnFinish;

    // The running thread zeroes m_Handle itself, so a joiner that relied on it could miss a thread that is
    // about to return and free the object under it. The owner joins through a handle of its own.
    pthread_t m_Joinable{};
    bool m_HasJoinable = false;
    std::mutex
        m_Starting;  ///< held by `run` until the handles are stored; the new thread passes through it first
};
