// SPDX-License-Identifier: GPL-3.0-or-later
#include "service/server/Poller.h"

#include <algorithm>
#include <chrono>
#include <utility>

#include "service/traffic/Clock.h"

namespace service {

namespace {

constexpr std::chrono::milliseconds interval{1000};
constexpr std::chrono::milliseconds minimalRest{250};  ///< after a poll, however long it took

}  // namespace

Poller::Poller(TrafficSource& source, Ledger& ledger, std::function<void()> onPolled)
    : m_Source(source), m_Ledger(ledger), m_OnPolled(std::move(onPolled)), m_Thread([this] { run(); }) {}

Poller::~Poller() {
    {
        const std::lock_guard lock(m_Mutex);
        m_StopRequested = true;
    }
    m_Requested.notify_one();
    m_Thread.join();
}

void Poller::wake() {
    {
        const std::lock_guard lock(m_Mutex);
        m_PollRequested = true;
    }
    m_Requested.notify_one();
}

void Poller::run() {
    using std::chrono::steady_clock;
    steady_clock::time_point next = steady_clock::now();
    bool stop = false;
    while (!stop) {
        poll(&TrafficSource::poll);
        const steady_clock::time_point now = steady_clock::now();
        if (next <= now) {  // else it was woken, and its turn is still to come
            next += interval;
        }
        next = std::max(next, now + minimalRest);  // no hurry to catch up
        std::unique_lock lock(m_Mutex);
        m_Requested.wait_until(lock, next, [this] { return m_StopRequested || m_PollRequested; });
        m_PollRequested = false;
        stop = m_StopRequested;
    }
    poll(&TrafficSource::pollLast);
}

void Poller::poll(Poll poll) {
    const Moment now = systemClock();
    m_Ledger.apply((m_Source.*poll)(now), now);
    m_OnPolled();
}

}  // namespace service
