// SPDX-License-Identifier: GPL-3.0-or-later
#include "threads/PosixThread.h"

#include <gtest/gtest.h>
#include <signal.h>

#include <atomic>
#include <functional>
#include <future>
#include <utility>

namespace {

class FunctionThread : public PosixThread {
  public:
    explicit FunctionThread(std::function<void()> body, bool destroyOnFinish = false)
        : PosixThread(destroyOnFinish), m_Body(std::move(body)) {}
    ~FunctionThread() override {
        waitForStop();
        if (m_Destroyed != nullptr) {
            m_Destroyed->set_value();
        }
    }

    void entryPoint() override { m_Body(); }

    std::promise<void>* m_Destroyed = nullptr;

  private:
    std::function<void()> m_Body;
};

TEST(PosixThread, RunsItsBodyOnceARunAndCanStartAgain) {
    std::atomic<int> runs = 0;
    std::promise<void> release;
    auto released = release.get_future().share();
    FunctionThread thread([&] {
        ++runs;
        released.wait();
    });
    thread.waitForStop();
    EXPECT_FALSE(thread.isRunned());
    thread.run();
    thread.run();
    EXPECT_TRUE(thread.isRunned());
    release.set_value();
    thread.waitForStop();
    EXPECT_FALSE(thread.isRunned());
    EXPECT_EQ(runs, 1);
    for (int i = 2; i < 200; ++i) {
        thread.run();
        thread.waitForStop();
        EXPECT_EQ(runs, i);
    }
}

TEST(PosixThread, DestroysItselfAfterItsBody) {
    for (int i = 0; i < 200; ++i) {
        std::promise<void> destroyed;
        auto* thread = new FunctionThread([] {}, true);
        thread->m_Destroyed = &destroyed;
        thread->run();
        destroyed.get_future().wait();
    }
}

TEST(PosixThread, IsStillJoinedAfterASignalTookItsHandle) {
    static std::atomic<int> signals;
    signal(SIGUSR1, [](int) { ++signals; });
    std::atomic<bool> finished = false;
    std::promise<void> release;
    {
        FunctionThread thread([&] {
            release.get_future().wait();
            finished = true;
        });
        thread.run();
        thread.kill(SIGUSR1);
        EXPECT_TRUE(thread.isRunned());
        thread.kill(SIGUSR1);
        release.set_value();
    }
    EXPECT_EQ(signals, 1) << "the second kill finds no handle";
    EXPECT_TRUE(finished) << "the destructor must wait for the body";
}

}  // namespace
