// SPDX-License-Identifier: GPL-3.0-or-later
#include "bench/BusyYear.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <string>

#include "service/store/StoreBatch.h"

using namespace service;
using namespace std::chrono;

bool BusyYear::writeTo(Store& store) {
    StoreBatch batch(store);
    SeriesGrains grains;
    grains.until.fill(floor<hours>(m_Present));
    batch.setGrains(grains);
    for (Moment moment = m_Present - days(365); moment < m_Present; moment += minutes(10)) {
        if (!batch.append(step(moment, moment + minutes(10), 19))) {
            return false;
        }
    }
    return batch.commit();
}

LedgerChanges BusyYear::step(Moment from, Moment to, int connectionCount) {
    m_Changes.moment = to;
    m_Changes.totals.start = m_Present - days(365);
    m_Changes.nextApplicationId = applicationCount + 1;
    m_Changes.applications.clear();
    m_Changes.connections.clear();
    for (int id = 1; id <= applicationCount; ++id) {
        if (m_Random() % 3 == 0) {
            move(id);
        }
    }
    for (int i = 0; i < connectionCount; ++i) {
        connect(from + seconds(m_Random() % static_cast<unsigned>((to - from).count())));
    }
    return m_Changes;
}

void BusyYear::move(ApplicationId id) {
    ApplicationRecord& application = m_Applications[id - 1];
    application.id = id;
    application.name = std::string("Application ").append(std::to_string(id));
    application.path = "/usr/bin/application-" + std::to_string(id);
    const auto protocolClass = m_Random() % 4 == 0 ? ProtocolClass::Udp : ProtocolClass::Tcp;
    const ByteCount bytes{static_cast<std::int64_t>(m_Random() % 100'000), 100};
    application.counters[protocolClass] += bytes;
    m_Changes.totals.counters[protocolClass] += bytes;
    m_Changes.applications.push_back(application);
}

void BusyYear::connect(Moment start) {
    ConnectionRecord connection;
    connection.id = m_Changes.nextConnectionId++;
    connection.applicationId = static_cast<ApplicationId>(1 + m_Random() % applicationCount);
    connection.start = start;
    const double life = std::exp(std::uniform_real_distribution(0.0, 12.0)(m_Random));
    connection.end = std::min(start + seconds(static_cast<int>(life)), m_Present);
    connection.socketProtocol = 6;
    connection.remote.family = connection.local.family = IpAddress::IPv4;
    connection.remote.port = static_cast<std::uint16_t>(m_Random());
    m_Changes.connections.push_back(connection);
}
