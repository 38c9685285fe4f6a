// SPDX-License-Identifier: GPL-3.0-or-later
#include "service/store/Housekeeper.h"

#include <algorithm>
#include <utility>

#include "service/log/Log.h"

namespace service {

namespace {

using namespace std::chrono;

constexpr minutes restAfterFailure{1};

}  // namespace

void Housekeeper::setRetention(std::optional<days> retention) {
    m_Retention = retention;
    m_Begun.reset();
    m_RestsUntil = {};
}

sys_days Housekeeper::today() const {
    return floor<days>(std::min(m_Store.present(), m_Now()));
}

bool Housekeeper::isDue() const {
    return m_Begun != today();
}

bool Housekeeper::isDone() const {
    return m_Store.isPruned() && m_Store.isThinned(m_Now());
}

bool Housekeeper::hasWork() const {
    return (isDue() || !isDone()) && steady_clock::now() >= m_RestsUntil;
}

void Housekeeper::work() {
    const bool worked = isDue() ? begin() : !m_Store.isPruned() ? m_Store.prune() : m_Store.thin(m_Now());
    if (!worked) {
        m_RestsUntil = steady_clock::now() + restAfterFailure;
    }
    report(worked);
}

bool Housekeeper::begin() {
    if (!m_Store.beginPruning(m_Now(), m_Retention)) {
        return false;
    }
    m_Begun = today();
    return true;
}

/** One line when the disk begins to refuse, one when all is done after that. */
void Housekeeper::report(bool worked) {
    if (!worked && std::exchange(m_Works, false)) {
        logLine("store: what is too old in the history cannot be dropped now: ", m_Store.lastError());
    } else if (worked && isDone() && !std::exchange(m_Works, true)) {
        logLine("store: what is too old in the history is dropped now");
    }
}

}  // namespace service
