// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/charts/HistoryGraphicWorker.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "daemon/DaemonConnection.h"
#include "threads/ThreadSignals.h"

namespace {

std::chrono::milliseconds sStepPause = HistoryGraphicWorker::defaultStepPause;  // main thread

double secondsOf(const QDateTime& date) {
    return static_cast<double>(date.toMSecsSinceEpoch()) / 1000.0;
}

/** To the millisecond: sums of steps that miss a full second by less than that mean it. */
QDateTime dateOf(double seconds) {
    return QDateTime::fromMSecsSinceEpoch(std::llround(seconds * 1000.0));
}

}  // namespace

void HistoryGraphicWorker::setStepPause(std::chrono::milliseconds pause) {
    sStepPause = pause;
}

HistoryGraphicWorker::HistoryGraphicWorker(const Task& task, std::atomic<bool>& updateStarted,
                                           std::atomic<bool>& updateNeedCancel)
    : m_Task(task),
      m_Math(mathOf(task)),
      m_StepPause(sStepPause),
      m_UpdateStarted(updateStarted),
      m_UpdateNeedCancel(updateNeedCancel),
      m_Thread(&HistoryGraphicWorker::updateGraphicThread, this) {}

HistoryGraphicMath HistoryGraphicWorker::mathOf(const Task& task) {
    return {secondsOf(task.startTime), secondsOf(task.endTime)};
}

HistoryGraphicWorker::~HistoryGraphicWorker() {
    m_UpdateNeedCancel = true;
    m_Thread.join();
}

void HistoryGraphicWorker::updateGraphicThread() {
    blockThreadSignals();
    const std::int64_t peak = computePoints();
    tell([this, peak] { emit pointsDone(peak); });
    m_UpdateStarted = false;
    updateDataFlowCaptions();
    tell([this] { emit graphicUpdated(); });
}

/** Gives the peak. */
std::int64_t HistoryGraphicWorker::computePoints() {
    Totals previous = totalsAt(m_Math.start - m_Math.step);
    std::int64_t peak = 0;
    for (double x = 0.0; x <= m_Math.limit(); x += m_Math.step) {
        const Totals current = totalsAt(m_Math.start + x);
        const std::int64_t received = current.received - previous.received;
        const std::int64_t sended = current.sended - previous.sended;
        tell([this, x, received, sended] { emit stepDone(x, received, sended); });
        peak = std::max({peak, received, sended});
        if (m_UpdateNeedCancel) {
            break;
        }
        std::this_thread::sleep_for(m_StepPause);
        previous = current;
    }
    return peak;
}

void HistoryGraphicWorker::updateDataFlowCaptions() {
    std::int64_t totals[4] = {};  // received and sent at the start, received and sent at the end
    for (std::size_t i = 0; i < std::size(totals); ++i) {
        if (m_UpdateNeedCancel) {
            return;
        }
        const QDateTime& time = i < 2 ? m_Task.startTime : m_Task.endTime;
        totals[i] = i % 2 == 0 ? receivedAt(time) : sendedAt(time);
    }
    const std::int64_t received = totals[2] - totals[0];
    const std::int64_t sended = totals[3] - totals[1];
    tell([this, received, sended] { emit dataFlowKnown(received, sended); });
}

void HistoryGraphicWorker::tell(std::function<void()> report) {
    const std::lock_guard lock(m_Mutex);
    m_Reports.push_back(std::move(report));
    if (m_Reports.size() == 1) {
        QMetaObject::invokeMethod(this, &HistoryGraphicWorker::deliverReports, Qt::QueuedConnection);
    }
}

void HistoryGraphicWorker::deliverReports() {
    std::vector<std::function<void()>> reports;
    {
        const std::lock_guard lock(m_Mutex);
        reports.swap(m_Reports);
    }
    for (const auto& report : reports) {
        report();
    }
}

/** The sent bytes are asked for first. */
HistoryGraphicWorker::Totals HistoryGraphicWorker::totalsAt(double time) const {
    Totals totals;
    totals.sended = sendedAt(dateOf(time));
    totals.received = receivedAt(dateOf(time));
    return totals;
}

std::int64_t HistoryGraphicWorker::receivedAt(const QDateTime& time) const {
    DaemonConnection* daemon = DaemonConnection::sharedConnection();
    return m_Task.applicationId ? daemon->totalReceivedBytesForApplicationId(*m_Task.applicationId, time,
                                                                             m_Task.socketProtocol)
                                : daemon->totalReceivedBytesToTime(time, m_Task.socketProtocol);
}

std::int64_t HistoryGraphicWorker::sendedAt(const QDateTime& time) const {
    DaemonConnection* daemon = DaemonConnection::sharedConnection();
    return m_Task.applicationId
               ? daemon->totalSendedBytesForApplicationId(*m_Task.applicationId, time, m_Task.socketProtocol)
               : daemon->totalSendedBytesToTime(time, m_Task.socketProtocol);
}
