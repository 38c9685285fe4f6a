// SPDX-License-Identifier: GPL-3.0-or-later
#include "daemon/ConnectionsIterator.h"

#include "daemon/DaemonConnection.h"

std::shared_ptr<ConnectionsIterator> ConnectionsIterator::iterator() {
    return std::make_shared<ConnectionsIterator>(
        DaemonConnection::sharedConnection()->createConnectionsIterator());
}

ConnectionsIterator::ConnectionsIterator(std::int32_t iteratorId) : m_IteratorId(iteratorId) {}

ConnectionsIterator::~ConnectionsIterator() {
    if (!DaemonConnection::isOver()) {
        DaemonConnection::sharedConnection()->deleteConnectionsIterator(m_IteratorId);
    }
}

void ConnectionsIterator::setFilterWithStartTime(const QDateTime& startTime, const QDateTime& endTime,
                                                 std::int32_t applicationId, std::int32_t socketProtocol,
                                                 std::int32_t sortField, std::int32_t sortDirection) {
    DaemonConnection::sharedConnection()->setConnectionIteratorParameters(
        m_IteratorId, startTime, endTime, applicationId, socketProtocol, sortField, sortDirection);
    clearCache();
}

std::int32_t ConnectionsIterator::countConnections() {
    return DaemonConnection::sharedConnection()->countConnections(m_IteratorId);
}

std::shared_ptr<const ConnectionInfo> ConnectionsIterator::connectionInfo(std::int32_t index) {
    if (index == m_CurrentIndex && m_CurrentInfo != nullptr) {
        return m_CurrentInfo;
    }
    clearCache();
    m_CurrentInfo = DaemonConnection::sharedConnection()->connectionInfo(m_IteratorId, index);
    if (m_CurrentInfo != nullptr) {
        m_CurrentIndex = index;
    }
    return m_CurrentInfo;
}

std::vector<std::shared_ptr<const ConnectionInfo>> ConnectionsIterator::prefetch(std::int32_t first,
                                                                                 std::int32_t count) {
    return DaemonConnection::sharedConnection()->connectionInfos(m_IteratorId, first, count);
}

void ConnectionsIterator::clearCache() {
    m_CurrentInfo = nullptr;
    m_CurrentIndex = -1;
}
