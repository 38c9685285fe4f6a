// SPDX-License-Identifier: GPL-3.0-or-later
#include "daemon/ApplicationsIterator.h"

#include "daemon/DaemonConnection.h"

std::shared_ptr<ApplicationsIterator> ApplicationsIterator::iterator() {
    return std::make_shared<ApplicationsIterator>(
        DaemonConnection::sharedConnection()->createApplicationsIterator());
}

ApplicationsIterator::ApplicationsIterator(std::int32_t iteratorId) : m_IteratorId(iteratorId) {}

ApplicationsIterator::~ApplicationsIterator() {
    if (!DaemonConnection::isOver()) {
        DaemonConnection::sharedConnection()->deleteApplicationsIterator(m_IteratorId);
    }
}

void ApplicationsIterator::setSortField(std::int32_t sortField, std::int32_t direction) {
    DaemonConnection::sharedConnection()->setApplicationIteratorParameters(m_IteratorId, sortField,
                                                                           direction);
    clearCache();
}

std::int32_t ApplicationsIterator::countApplications() {
    return DaemonConnection::sharedConnection()->countApplications(m_IteratorId);
}

std::shared_ptr<const ApplicationInfo> ApplicationsIterator::applicationInfo(std::int32_t index) {
    if (index == m_CurrentIndex && m_CurrentInfo != nullptr) {
        return m_CurrentInfo;
    }
    clearCache();
    m_CurrentInfo = DaemonConnection::sharedConnection()->applicationInfo(m_IteratorId, index);
    if (m_CurrentInfo != nullptr) {
        m_CurrentIndex = index;
    }
    return m_CurrentInfo;
}

std::vector<std::shared_ptr<const ApplicationInfo>> ApplicationsIterator::prefetch(std::int32_t first,
                                                                                   std::int32_t count) {
    return DaemonConnection::sharedConnection()->applicationInfos(m_IteratorId, first, count);
}

void ApplicationsIterator::clearCache() {
    m_CurrentInfo = nullptr;
    m_CurrentIndex = -1;
}
