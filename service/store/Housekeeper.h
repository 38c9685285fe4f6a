// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <chrono>
#include <optional>
#include <utility>

#include "service/store/Store.h"
#include "service/traffic/Clock.h"

namespace service {

/**
 * Knows when what is too old in a store has to go: at the start, when the retention changes, and once a day of the
 * history, which is never ahead of the clock. In between it has the series made coarser as they age. A disk that
 * refuses is asked again after a minute. For the thread of its store.
 */
class Housekeeper {
  public:
    /** `store` must outlive the housekeeper. Until a retention is set it only ends what an earlier run began. */
    explicit Housekeeper(Store& store, Clock now = systemClock) : m_Store(store), m_Now(std::move(now)) {}

    /** How much of the past is kept; nothing: all of it. */
    void setRetention(std::optional<std::chrono::days> retention);

    /** Whether something is to be done now. */
    bool hasWork() const;

    /** Does a small part of it. */
    void work();

  private:
    std::chrono::sys_days today() const;
    bool isDue() const;
    bool isDone() const;
    bool begin();
    void report(bool worked);

    Store& m_Store;
    const Clock m_Now;
    std::optional<std::chrono::days> m_Retention;
    std::optional<std::chrono::sys_days> m_Begun;  ///< the day whose pruning has begun
    std::chrono::steady_clock::time_point m_RestsUntil;
    bool m_Works = true;  ///< false from a refusal until all is done
};

}  // namespace service
