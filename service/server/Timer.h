// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <chrono>
#include <functional>

#include "service/server/EventLoop.h"

namespace service {

/** Calls back on a loop's thread at a steady interval, from `start` until `stop` or destruction. */
class Timer {
  public:
    /** `loop` must outlive the timer. */
    Timer(EventLoop& loop, std::function<void()> callback);
    ~Timer();

    Timer(const Timer&) = delete;
    Timer& operator=(const Timer&) = delete;

    /** Starts, or goes on with a new interval. */
    void start(std::chrono::milliseconds interval);
    void stop() { start(std::chrono::milliseconds::zero()); }

  private:
    EventLoop& m_Loop;
    FileDescriptor m_Descriptor;
    EventLoop::WatchId m_Watch;
};

}  // namespace service
