// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDateTime>
#include <QObject>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <mutex>
#include <optional>
#include <thread>
#include <vector>

#include "ui/charts/HistoryGraphicMath.h"

/**
 * One computation of a chart of the past: a thread that asks the daemon for the totals at the end of every step and,
 * at last, for those of the captions.
 *
 * The thread never waits for the main thread, which may be waiting for it. What it has to say it queues for this
 * object, which lives on the main thread and emits it there as signals: whoever deletes the object hears nothing of
 * the computation any more. Main thread but for the thread itself.
 */
class HistoryGraphicWorker : public QObject {
    Q_OBJECT

  public:
    struct Task {
        QDateTime startTime;
        QDateTime endTime;
        std::optional<std::int32_t> applicationId;  ///< nothing: all applications together
        std::int32_t socketProtocol = -1;           ///< 6 TCP, 17 UDP, -1 all
    };

    static HistoryGraphicMath mathOf(const Task& task);

    /** Between two steps, so that a chart is no burden for the daemon. For computations that begin after a change. */
    static constexpr auto defaultStepPause = std::chrono::milliseconds(50);
    static void setStepPause(std::chrono::milliseconds pause);

    /**
     * Begins. The flags outlive this object: the thread clears `updateStarted` when its points are complete or it was
     * cancelled, and looks at `updateNeedCancel` once a step.
     */
    HistoryGraphicWorker(const Task& task, std::atomic<bool>& updateStarted,
                         std::atomic<bool>& updateNeedCancel);

    /** Cancels what is left, and waits for it: a step, or a query for the captions. */
    ~HistoryGraphicWorker() override;

    const HistoryGraphicMath& math() const { return m_Math; }

  signals:
    /** Bytes in the step that ends at `x` seconds. */
    void stepDone(double x, qint64 receivedBytes, qint64 sendedBytes);

    /** All points are there, or those until it was cancelled. `peak`: of all of them, at least 0. */
    void pointsDone(qint64 peak);

    /** Bytes from the range's start to its end; never after a cancellation. */
    void dataFlowKnown(qint64 receivedBytes, qint64 sendedBytes);

    /** The last one. Whoever hears any of these does not delete this object at once. */
    void graphicUpdated();

  private:
    struct Totals {
        std::int64_t received = 0;
        std::int64_t sended = 0;
    };

    void updateGraphicThread();
    std::int64_t computePoints();
    void updateDataFlowCaptions();
    void tell(std::function<void()> report);
    void deliverReports();

    Totals totalsAt(double time) const;
    std::int64_t receivedAt(const QDateTime& time) const;
    std::int64_t sendedAt(const QDateTime& time) const;

    const Task m_Task;
    const HistoryGraphicMath m_Math;
    const std::chrono::milliseconds m_StepPause;
    std::atomic<bool>& m_UpdateStarted;
    std::atomic<bool>& m_UpdateNeedCancel;
    std::mutex m_Mutex;
    std::vector<std::function<void()>>
        m_Reports;  ///< guarded by m_Mutex; a delivery is queued while there are some
    std::thread m_Thread;
};
