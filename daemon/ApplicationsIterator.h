// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "daemon/ApplicationInfo.h"

/**
 * A cursor of the daemon's over its applications: sorted there, fetched from here one row at a time. It lives
 * as long as its counterpart in the daemon. For the main thread.
 */
class ApplicationsIterator {
  public:
    /** A new cursor of the shared connection; its id is -1 when the daemon made none. Never null. */
    static std::shared_ptr<ApplicationsIterator> iterator();

    explicit ApplicationsIterator(std::int32_t iteratorId = -1);

    /** Deletes the cursor in the daemon. */
    ~ApplicationsIterator();

    ApplicationsIterator(const ApplicationsIterator&) = delete;
    ApplicationsIterator& operator=(const ApplicationsIterator&) = delete;

    /** `direction`: 1 ascending, 0 descending, 2 none. Empties the one-row cache. */
    void setSortField(std::int32_t sortField, std::int32_t direction = 1);

    /** Rows of the cursor; 0 when the request fails, -1 without a link. */
    std::int32_t countApplications();

    /** The row at `index`, from 0; the row asked for last costs no request. Null when there is none. */
    std::shared_ptr<const ApplicationInfo> applicationInfo(std::int32_t index);

    /**
     * Fetches `count` rows from `first` on for about the price of one: all requests leave before the first
     * answer is awaited. Rows that do not exist are null. Neither reads nor changes the one-row cache.
     */
    std::vector<std::shared_ptr<const ApplicationInfo>> prefetch(std::int32_t first, std::int32_t count);

  private:
    void clearCache();

    std::int32_t m_IteratorId;
    std::shared_ptr<const ApplicationInfo> m_CurrentInfo;
    std::int32_t m_CurrentIndex = -1;  ///< index of m_CurrentInfo; -1 when there is none
};
