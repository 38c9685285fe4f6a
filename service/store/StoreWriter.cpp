// SPDX-License-Identifier: GPL-3.0-or-later
#include "service/store/StoreWriter.h"

#include <chrono>
#include <utility>

#include "service/log/Log.h"
#include "service/traffic/Clock.h"

namespace service {

namespace {

constexpr std::chrono::seconds writeInterval{1};

/** Connections kept in memory for a disk that takes nothing; of about 130 bytes each. */
constexpr std::size_t maxBacklogConnections = 100'000;

}  // namespace

StoreWriter::StoreWriter(Ledger& ledger, Store& store, std::function<void(bool wiped)> onWipeEnded)
    : m_Ledger(ledger),
      m_Store(store),
      m_OnWipeEnded(std::move(onWipeEnded)),
      m_Housekeeper(store),
      m_NextTurn(std::chrono::steady_clock::now() + writeInterval),
      m_Thread([this] { run(); }) {}

StoreWriter::~StoreWriter() {
    {
        const std::lock_guard lock(m_Mutex);
        m_StopRequested = true;
    }
    m_Changed.notify_one();
    m_Thread.join();
}

void StoreWriter::wake() {
    {
        const std::lock_guard lock(m_Mutex);
        m_WakeRequested = true;
    }
    m_Changed.notify_one();
}

void StoreWriter::wipe() {
    {
        const std::lock_guard lock(m_Mutex);
        m_WipeRequested = true;
        m_WakeRequested = true;
    }
    m_Changed.notify_one();
}

void StoreWriter::setRetention(std::optional<std::chrono::days> retention) {
    {
        const std::lock_guard lock(m_Mutex);
        m_NewRetention = retention;
        m_WakeRequested = true;
    }
    m_Changed.notify_one();
}

void StoreWriter::run() {
    while (waitForNextTurn()) {
        takeTurn();
        keepHouse();
    }
    takeTurn();
}

/** False when the thread is to end. */
bool StoreWriter::waitForNextTurn() {
    std::unique_lock lock(m_Mutex);
    m_Changed.wait_until(lock, m_NextTurn, [this] { return m_WakeRequested || m_StopRequested; });
    m_WakeRequested = false;
    m_NextTurn = std::chrono::steady_clock::now() + writeInterval;
    if (const auto retention = std::exchange(m_NewRetention, {})) {
        m_Housekeeper.setRetention(*retention);
    }
    return !m_StopRequested;
}

void StoreWriter::takeTurn() {
    std::unique_lock lock(m_Mutex);
    const bool isToWipe = std::exchange(m_WipeRequested, false);
    lock.unlock();
    if (isToWipe) {
        wipeHistory();
    }
    writeChanges();
}

bool StoreWriter::isCalled() {
    const std::lock_guard lock(m_Mutex);
    return m_WakeRequested || m_StopRequested;
}

/** Until the next turn is due or somebody calls. */
void StoreWriter::keepHouse() {
    m_Store.cutLog();
    while (m_Housekeeper.hasWork() && !isCalled() && std::chrono::steady_clock::now() < m_NextTurn) {
        m_Housekeeper.work();
    }
}

void StoreWriter::wipeHistory() {
    const bool wiped = m_Store.append(m_Ledger.takeFresh(systemClock()));
    m_Ledger.endClearing(wiped);
    if (wiped) {
        m_Backlog = {};
        m_Store.giveSpaceBack();
    } else {
        logLine("store: the history cannot be wiped and stays as it is: ", m_Store.lastError());
    }
    m_OnWipeEnded(wiped);
}

void StoreWriter::writeChanges() {
    m_Backlog.absorb(m_Ledger.takeChanges(systemClock()));
    if (m_Backlog.empty()) {
        return;
    }
    const bool written = m_Store.append(m_Backlog);
    report(written);
    if (!written) {
        limitBacklog();
        return;
    }
    m_Backlog = {};
}

/** Gives up the oldest connections of a backlog that has grown too long; the counters are never given up. */
void StoreWriter::limitBacklog() {
    auto& connections = m_Backlog.connections;
    if (connections.size() > maxBacklogConnections) {
        const auto excess = connections.size() - maxBacklogConnections;
        connections.erase(connections.begin(), connections.begin() + static_cast<std::ptrdiff_t>(excess));
        m_Dropped += excess;
    }
}

/** One line when writing begins to fail and one when it works again. */
void StoreWriter::report(bool written) {
    const bool worked = std::exchange(m_Works, written);
    if (written && !worked) {
        logLine("store: the history goes on; connections lost meanwhile: ", std::exchange(m_Dropped, 0));
    } else if (!written && worked) {
        logLine("store: the history waits until it can be written: ", m_Store.lastError());
    }
}

}  // namespace service
