// SPDX-License-Identifier: GPL-3.0-or-later
#include "service/ledger/Ledger.h"

#include <algorithm>
#include <utility>

namespace service {

Ledger::Ledger(LedgerState state, RecordingRule rule)
    : m_Filter(std::move(rule)),
      m_Ids{state.nextApplicationId, state.nextConnectionId},
      m_Shown(std::make_unique<Tally>(state.totals, std::move(state.applications), m_Ids)) {}

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
    const auto recordedSince = m_Filter.recordedSince(sample.application->path);
    forEachTally([&](Tally& tally) {
        if (recordedSince) {
            tally.record(sample, *recordedSince, now);
        }
        if (sample.closed) {
            tally.close(sample.connectionKey, now);
        }
    });
}

template <class Action>
void Ledger::forEachTally(Action action) {
    action(*m_Shown);
    if (m_Fresh) {
        action(*m_Fresh);
    }
}

void Ledger::setRule(RecordingRule rule) {
    const std::lock_guard lock(m_Mutex);
    m_NextRule = std::move(rule);
}

void Ledger::changeRule(RecordingRule rule, Moment now) {
    m_Filter.change(std::move(rule), now);
    forEachTally([&](Tally& tally) { tally.closeUnrecorded(m_Filter, now); });
}

void Ledger::beginClearing(Moment now) {
    const std::lock_guard lock(m_Mutex);
    m_Fresh = std::make_unique<Tally>(TotalsRecord{.counters = {}, .start = now},
                                      std::vector<ApplicationRecord>(), m_Ids);
}

LedgerChanges Ledger::takeFresh(Moment now) {
    const std::lock_guard lock(m_Mutex);
    LedgerChanges fresh = m_Fresh->takeChanges(now);
    fresh.wiped = true;
    return fresh;
}

void Ledger::endClearing(bool cleared) {
    std::unique_ptr<Tally> forgotten;  // outlives the lock: there may be much to free
    const std::lock_guard lock(m_Mutex);
    if (cleared) {
        keepFromNews(*m_Shown);
        forgotten = std::exchange(m_Shown, std::move(m_Fresh));
    } else {
        forgotten = std::move(m_Fresh);
    }
}

/** Of those that are new there the news is still to come. */
void Ledger::keepFromNews(Tally& tally) {
    const std::vector<ApplicationId> news = tally.takeNewApplications();
    for (ApplicationRecord& application : tally.applications()) {
        if (!std::ranges::binary_search(news, application.id)) {
            m_OldPaths.insert(std::move(application.path));
        }
    }
}

LedgerChanges Ledger::takeChanges(Moment now) {
    const std::lock_guard lock(m_Mutex);
    return m_Shown->takeChanges(now);
}

std::vector<ApplicationId> Ledger::takeNewApplications() {
    const std::lock_guard lock(m_Mutex);
    std::vector<ApplicationId> news = m_Shown->takeNewApplications();
    std::erase_if(news,
                  [this](ApplicationId id) { return m_OldPaths.contains(m_Shown->application(id)->path); });
    return news;
}

std::optional<ApplicationRecord> Ledger::application(ApplicationId id) const {
    const std::lock_guard lock(m_Mutex);
    return m_Shown->application(id);
}

std::vector<ApplicationRecord> Ledger::applications() const {
    const std::lock_guard lock(m_Mutex);
    return m_Shown->applications();
}

std::optional<ConnectionRecord> Ledger::liveConnection(ConnectionId id, Moment now) const {
    const std::lock_guard lock(m_Mutex);
    std::optional<ConnectionRecord> connection = m_Shown->liveConnection(id);
    if (connection) {
        connection->end = std::max(connection->end, now);
    }
    return connection;
}

TotalsRecord Ledger::totals() const {
    const std::lock_guard lock(m_Mutex);
    return m_Shown->totals();
}

}  // namespace service
