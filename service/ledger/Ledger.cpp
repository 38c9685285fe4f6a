// SPDX-License-Identifier: GPL-3.0-or-later
#include "service/ledger/Ledger.h"

#include <algorithm>
#include <utility>

namespace service {

Ledger::Ledger(LedgerState state, RecordingRule rule)
    : m_Filter(std::move(rule)),
      m_Totals(state.totals),
      m_NextApplicationId(state.nextApplicationId),
      m_NextConnectionId(state.nextConnectionId) {
    for (ApplicationRecord& application : state.applications) {
        m_ApplicationIds.emplace(application.path, application.id);
        m_Applications.emplace(application.id, std::move(application));
    }
}

void Ledger::apply(const std::vector<TrafficSample>& samples, Moment now) {
    const std::lock_guard lock(m_Mutex);
    for (const TrafficSample& sample : samples) {
        enter(sample, now);
    }
    if (m_NextRule) {
        changeRule(*std::exchange(m_NextRule, std::nullopt), now);
    }
}

void Ledger::enter(const TrafficSample& sample, Moment now) {
    if (const auto recordedSince = m_Filter.recordedSince(sample.application->path)) {
        record(sample, *recordedSince, now);
    }
    if (sample.closed) {
        closeConnection(sample.connectionKey, now);
    }
}

void Ledger::record(const TrafficSample& sample, Moment recordedSince, Moment now) {
    ApplicationRecord& application = applicationOf(*sample.application, now);
    ConnectionRecord& connection = connectionOf(sample, application.id, recordedSince, now);
    if (sample.moved == ByteCount{}) {
        return;
    }
    const ProtocolClass protocolClass = protocolClassOf(sample.socketProtocol);
    application.counters.add(protocolClass, sample.moved, sample.payload);
    application.lastSeen = now;
    m_Totals.counters.add(protocolClass, sample.moved, sample.payload);
    connection.applicationId = application.id;
    connection.bytes += sample.moved;
    connection.payload += sample.payload;
    connection.end = now;
    m_ChangedApplications.insert(application.id);
    m_ChangedConnections.insert(sample.connectionKey);
}

ApplicationRecord& Ledger::applicationOf(const ApplicationIdentity& identity, Moment now) {
    const auto [known, isNew] = m_ApplicationIds.try_emplace(identity.path, m_NextApplicationId);
    if (!isNew) {
        return m_Applications.at(known->second);
    }
    const ApplicationId id = m_NextApplicationId++;
    m_NewApplications.push_back(id);
    m_ChangedApplications.insert(id);
    ApplicationRecord& application = m_Applications[id];
    application = {.id = id,
                   .name = identity.name,
                   .path = identity.path,
                   .counters = {},
                   .firstSeen = now,
                   .lastSeen = now};
    return application;
}

ConnectionRecord& Ledger::connectionOf(const TrafficSample& sample, ApplicationId application,
                                       Moment recordedSince, Moment now) {
    const auto [live, isNew] = m_Live.try_emplace(sample.connectionKey);
    ConnectionRecord& connection = live->second;
    if (!isNew) {
        return connection;
    }
    connection.id = m_NextConnectionId++;
    connection.applicationId = application;
    // A record tells of what was counted, so it never begins before the counting did.
    connection.start = std::min(std::max({sample.opened, m_Totals.start, recordedSince}), now);
    connection.end = now;
    connection.isOpen = true;
    connection.direction = sample.direction;
    connection.socketDomain = sample.socketDomain;
    connection.socketType = sample.socketType;
    connection.socketProtocol = sample.socketProtocol;
    connection.remote = sample.remote;
    connection.local = sample.local;
    m_LiveKeys.emplace(connection.id, sample.connectionKey);
    m_ChangedConnections.insert(sample.connectionKey);
    return connection;
}

void Ledger::closeConnection(ConnectionKey key, Moment now) {
    const auto closed = m_Live.extract(key);
    if (closed.empty()) {
        return;  // its application is not recorded
    }
    ConnectionRecord& connection = closed.mapped();
    m_LiveKeys.erase(connection.id);
    m_ChangedConnections.erase(key);
    connection.end = now;
    connection.isOpen = false;
    m_Ended.push_back(connection);
}

void Ledger::setRule(RecordingRule rule) {
    const std::lock_guard lock(m_Mutex);
    m_NextRule = std::move(rule);
}

void Ledger::changeRule(RecordingRule rule, Moment now) {
    m_Filter.change(std::move(rule), now);
    std::vector<ConnectionKey> dropped;
    for (const auto& [key, connection] : m_Live) {
        if (!m_Filter.recordedSince(m_Applications.at(connection.applicationId).path)) {
            dropped.push_back(key);
        }
    }
    for (const ConnectionKey key : dropped) {
        closeConnection(key, now);
    }
}

void Ledger::clear(Moment now) {
    const std::lock_guard lock(m_Mutex);
    m_Totals = {.counters = {}, .start = now};
    m_Applications.clear();
    m_ApplicationIds.clear();
    m_Live.clear();
    m_LiveKeys.clear();
    m_ChangedApplications.clear();
    m_ChangedConnections.clear();
    m_Ended.clear();
    m_NewApplications.clear();
    m_Wiped = true;
}

LedgerChanges Ledger::takeChanges(Moment now) {
    const std::lock_guard lock(m_Mutex);
    LedgerChanges changes{.moment = now,
                          .totals = m_Totals,
                          .applications = {},
                          .connections = std::exchange(m_Ended, {}),
                          .nextApplicationId = m_NextApplicationId,
                          .nextConnectionId = m_NextConnectionId,
                          .wiped = std::exchange(m_Wiped, false)};
    for (const ApplicationId id : std::exchange(m_ChangedApplications, {})) {
        changes.applications.push_back(m_Applications.at(id));
    }
    for (const ConnectionKey key : std::exchange(m_ChangedConnections, {})) {
        changes.connections.push_back(m_Live.at(key));
    }
    std::ranges::sort(changes.connections, {}, &ConnectionRecord::id);
    return changes;
}

std::vector<ApplicationId> Ledger::takeNewApplications() {
    const std::lock_guard lock(m_Mutex);
    return std::exchange(m_NewApplications, {});
}

std::optional<ApplicationRecord> Ledger::application(ApplicationId id) const {
    const std::lock_guard lock(m_Mutex);
    const auto found = m_Applications.find(id);
    return found != m_Applications.end() ? std::optional(found->second) : std::nullopt;
}

std::vector<ApplicationRecord> Ledger::applications() const {
    const std::lock_guard lock(m_Mutex);
    std::vector<ApplicationRecord> applications;
    applications.reserve(m_Applications.size());
    for (const auto& [id, application] : m_Applications) {
        applications.push_back(application);
    }
    return applications;
}

std::optional<ConnectionRecord> Ledger::liveConnection(ConnectionId id, Moment now) const {
    const std::lock_guard lock(m_Mutex);
    const auto key = m_LiveKeys.find(id);
    if (key == m_LiveKeys.end()) {
        return std::nullopt;
    }
    ConnectionRecord connection = m_Live.at(key->second);
    connection.end = std::max(connection.end, now);
    return connection;
}

TotalsRecord Ledger::totals() const {
    const std::lock_guard lock(m_Mutex);
    return m_Totals;
}

}  // namespace service
