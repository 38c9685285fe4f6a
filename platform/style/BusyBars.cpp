// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/style/BusyBars.h"

#include <algorithm>

namespace {

constexpr int tickMs = 33;
constexpr qint64 turnMs = 1600;

}  // namespace

BusyBars::BusyBars() {
    m_Clock.start();
}

void BusyBars::keepMoving(QWidget* bar) {
    if (std::find(m_Bars.begin(), m_Bars.end(), bar) == m_Bars.end()) {
        m_Bars.emplace_back(bar);
    }
    if (!m_Timer.isActive()) {
        m_Timer.start(tickMs, this);
    }
}

qreal BusyBars::phase() const {
    return static_cast<qreal>(m_Clock.elapsed() % turnMs) / turnMs;
}

/** A bar that is hidden, gone or done is not painted any more and so falls out. */
void BusyBars::timerEvent(QTimerEvent*) {
    if (m_Bars.empty()) {
        m_Timer.stop();
    }
    for (const auto& bar : m_Bars) {
        if (bar != nullptr) {
            bar->update();
        }
    }
    m_Bars.clear();
}
