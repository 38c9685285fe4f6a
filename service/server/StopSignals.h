// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <functional>

#include "service/server/EventLoop.h"

namespace service {

/** Turns the first SIGTERM, SIGINT or SIGHUP into a call on a loop's thread; later ones change nothing. */
class StopSignals {
  public:
    /** Keeps these signals from ending the process; before the first thread is started, since threads inherit
     * it. */
    static void block();

    /** `loop` must outlive this object. */
    StopSignals(EventLoop& loop, std::function<void()> onSignal);
    ~StopSignals();

    StopSignals(const StopSignals&) = delete;
    StopSignals& operator=(const StopSignals&) = delete;

  private:
    EventLoop& m_Loop;
    FileDescriptor m_Descriptor;
    EventLoop::WatchId m_Watch;
};

}  // namespace service
