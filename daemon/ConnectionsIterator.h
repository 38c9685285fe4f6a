// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDateTime>
#include <cstdint>
#include <memory>
#include <vector>

#include "daemon/ConnectionInfo.h"

/**
 * A cursor of the daemon's over its connections: filtered and sorted there, fetched from here one row at a
 * time. It lives as long as its counterpart in the daemon. For the main thread.
 */
class ConnectionsIterator {
  public:
    /** A new cursor of the shared connection; its id is -1 when the daemon made none. Never null. */
    static std::shared_ptr<ConnectionsIterator> iterator();

    explicit ConnectionsIterator(std::int32_t iteratorId = -1);

    /** Deletes the cursor in the daemon. */
    ~ConnectionsIterator();

    ConnectionsIterator(const ConnectionsIterator&) = delete;
    ConnectionsIterator& operator=(const ConnectionsIterator&) = delete;

    /**
     * Connections whose life overlaps the range; `applicationId` and `socketProtocol` -1 stand for all.
     * Empties the one-row cache.
     */
    void setFilterWithStartTime(const QDateTime& startTime, const QDateTime& endTime,
                                std::int32_t applicationId, std::int32_t socketProtocol,
                                std::int32_t sortField, std::int32_t sortDirection);

    /** Rows of the cursor; 0 when the request fails and without a link. */
    std::int32_t countConnections();

    /** The row at `index`, from 0; the row asked for last costs no request. Null when there is none. */
    std::shared_ptr<const ConnectionInfo> connectionInfo(std::int32_t index);

    /** As `ApplicationsIterator::prefetch`. */
    std::vector<std::shared_ptr<const ConnectionInfo>> prefetch(std::int32_t first, std::int32_t count);

  private:
    void clearCache();

    std::int32_t m_IteratorId;
    std::shared_ptr<const ConnectionInfo> m_CurrentInfo;
    std::int32_t m_CurrentIndex = -1;  ///< index of m_CurrentInfo; -1 when there is none
};
