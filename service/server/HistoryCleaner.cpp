// SPDX-License-Identifier: GPL-3.0-or-later
#include "service/server/HistoryCleaner.h"

#include <utility>

#include "service/log/Log.h"

namespace service {

HistoryCleaner::HistoryCleaner(Ledger& ledger, Hooks hooks) : m_Ledger(ledger), m_Hooks(std::move(hooks)) {}

void HistoryCleaner::start() {
    if (m_Running) {
        return;
    }
    m_Running = true;
    logPeerLine("cleaning the history");
    m_Hooks.tellClients(DaemonEvent::CleaningStarted);
    m_Ledger.beginClearing(m_Hooks.now());
    m_Hooks.wipe();
}

void HistoryCleaner::finish(bool wiped) {
    m_Running = false;
    logPeerLine(wiped ? "the history is clean" : "the history was not cleaned");
    m_Hooks.tellClients(DaemonEvent::CleaningFinished);
}

}  // namespace service
