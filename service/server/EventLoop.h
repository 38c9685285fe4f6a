// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <unordered_map>
#include <vector>

#include "service/system/FileDescriptor.h"

namespace service {

/**
 * Waits for many descriptors at once and calls whoever watches the ones that are ready (epoll,
 * level-triggered).
 *
 * Everything runs on the thread that calls `run`; only `post` may be called from others. A handler may add
 * and remove watches, its own included.
 */
class EventLoop {
  public:
    using Handler = std::function<void(std::uint32_t events)>;
    using WatchId = std::uint64_t;  ///< never reused, so that an event for a removed watch finds nobody
    static constexpr WatchId noWatch = 0;

    EventLoop();

    EventLoop(const EventLoop&) = delete;
    EventLoop& operator=(const EventLoop&) = delete;

    /** Calls `handler` with the EPOLL bits whenever `descriptor` is ready for `events`; `noWatch` when it
     * can't. */
    WatchId watch(int descriptor, std::uint32_t events, Handler handler);

    /** Changes what a watch waits for; with 0 only errors and hang-ups are reported. */
    void setEvents(WatchId id, std::uint32_t events);

    /** Ends a watch; to be called before its descriptor is closed. An unknown id is ignored. */
    void unwatch(WatchId id);

    /** Has `task` called on the loop's thread soon; any thread. */
    void post(std::function<void()> task);

    /** Serves until `stop`. */
    void run();

    /** Makes `run` return once the handler that calls this has ended; loop's thread. */
    void stop() { m_Stopped = true; }

  private:
    struct Watch {
        int descriptor;
        std::uint32_t events;
        std::shared_ptr<Handler> handler;
    };

    void dispatch(WatchId id, std::uint32_t events);
    void runPosted();

    FileDescriptor m_Epoll;
    FileDescriptor m_Wake;  ///< eventfd that `post` rings
    std::unordered_map<WatchId, Watch> m_Watches;
    WatchId m_NextId = 1;
    bool m_Stopped = false;

    std::mutex m_PostedMutex;
    std::vector<std::function<void()>> m_Posted;  ///< guarded by m_PostedMutex
};

}  // namespace service
