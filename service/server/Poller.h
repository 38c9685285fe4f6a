// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <condition_variable>
#include <functional>
#include <mutex>
#include <thread>

#include "service/ledger/Ledger.h"
#include "service/traffic/TrafficSource.h"

namespace service {

/**
 * The one thread that polls a source and enters what it reports into the ledger, once a second. The
 * destructor polls a last time, so that nothing of the last second is lost, and ends the thread.
 */
class Poller {
  public:
    /** Source and ledger must outlive the poller. `onPolled` is called on the poller's thread after each
     * poll. */
    Poller(TrafficSource& source, Ledger& ledger, std::function<void()> onPolled);
    ~Poller();

    Poller(const Poller&) = delete;
    Poller& operator=(const Poller&) = delete;

    /** Polls at once as well as at the next second; any thread. */
    void wake();

  private:
    void run();
    using Poll = std::vector<TrafficSample> (TrafficSource::*)(Moment now);
    void poll(Poll poll);

    TrafficSource& m_Source;
    Ledger& m_Ledger;
    const std::function<void()> m_OnPolled;

    std::mutex m_Mutex;
    std::condition_variable m_Requested;
    bool m_PollRequested = false;  ///< guarded by m_Mutex
    bool m_StopRequested = false;  ///< guarded by m_Mutex

    std::thread m_Thread;  ///< last, because it uses all of the above
};

}  // namespace service
