// SPDX-License-Identifier: GPL-3.0-or-later
#include "service/ledger/Tally.h"

#include <algorithm>
#include <utility>

namespace service {

Tally::Tally(const TotalsRecord& totals, std::vector<ApplicationRecord> applications, NextIds& ids)
    : m_Ids(ids), m_Totals(totals) {
    for (ApplicationRecord& application : applications) {
        m_ApplicationIds.emplace(application.path, application.id);
        m_Applications.emplace(application.id, std::move(application));
    }
}

void Tally::record(const TrafficSample& sample, Moment recordedSince, Moment now) {
    ApplicationRecord& application = applicationOf(*sample.application, now);
    ConnectionRecord& connection = connectionOf(sample, application.id, recordedSince, now);
    if (sample.moved == ByteCount{} && sample.payload == ByteCount{}) {
        return;
    }
    const ProtocolClass protocolClass = protocolClassOf(sample.socketProtocol);
    application.counters.add(protocolClass, sample.moved, sample.payload);
    application.lastSeen = now;
    m_Totals.counters.add(protocolClass, sample.moved, sample.payload);
    connection.bytes += sample.moved;
    connection.payload += sample.payload;
    connection.end = now;
    m_ChangedApplications.insert(application.id);
    m_ChangedConnections.insert(sample.connectionKey);
}

ApplicationRecord& Tally::applicationOf(const ApplicationIdentity& identity, Moment now) {
    const auto [known, isNew] = m_ApplicationIds.try_emplace(identity.path, m_Ids.application);
    if (!isNew) {
        ApplicationRecord& application = m_Applications.at(known->second);
        if (application.name != identity.name) {  // its desktop entry came, went or was translated
            application.name = identity.name;
            m_ChangedApplications.insert(application.id);
        }
        return application;
    }
    const ApplicationId id = m_Ids.application++;
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

ConnectionRecord& Tally::connectionOf(const TrafficSample& sample, ApplicationId application,
                                      Moment recordedSince, Moment now) {
    const auto [live, isNew] = m_Live.try_emplace(sample.connectionKey);
    ConnectionRecord& connection = live->second;
    if (!isNew) {
        return connection;
    }
    connection.id = m_Ids.connection++;
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

void Tally::close(ConnectionKey key, Moment now) {
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

void Tally::closeUnrecorded(RecordingFilter& filter, Moment now) {
    std::vector<ConnectionKey> unrecorded;
    for (const auto& [key, connection] : m_Live) {
        if (!filter.recordedSince(m_Applications.at(connection.applicationId).path)) {
            unrecorded.push_back(key);
        }
    }
    for (const ConnectionKey key : unrecorded) {
        close(key, now);
    }
}

LedgerChanges Tally::takeChanges(Moment now) {
    LedgerChanges changes{.moment = now,
                          .totals = m_Totals,
                          .applications = {},
                          .connections = std::exchange(m_Ended, {}),
                          .nextApplicationId = m_Ids.application,
                          .nextConnectionId = m_Ids.connection};
    for (const ApplicationId id : std::exchange(m_ChangedApplications, {})) {
        changes.applications.push_back(m_Applications.at(id));
    }
    for (const ConnectionKey key : std::exchange(m_ChangedConnections, {})) {
        changes.connections.push_back(m_Live.at(key));
    }
    std::ranges::sort(changes.connections, {}, &ConnectionRecord::id);
    return changes;
}

std::vector<ApplicationId> Tally::takeNewApplications() {
    return std::exchange(m_NewApplications, {});
}

std::optional<ApplicationRecord> Tally::application(ApplicationId id) const {
    const auto found = m_Applications.find(id);
    return found != m_Applications.end() ? std::optional(found->second) : std::nullopt;
}

std::vector<ApplicationRecord> Tally::applications() const {
    std::vector<ApplicationRecord> applications;
    applications.reserve(m_Applications.size());
    for (const auto& [id, application] : m_Applications) {
        applications.push_back(application);
    }
    return applications;
}

std::optional<ConnectionRecord> Tally::liveConnection(ConnectionId id) const {
    const auto key = m_LiveKeys.find(id);
    return key != m_LiveKeys.end() ? std::optional(m_Live.at(key->second)) : std::nullopt;
}

}  // namespace service
