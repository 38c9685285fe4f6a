// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDateTime>
#include <QObject>
#include <atomic>
#include <cstdint>
#include <list>
#include <memory>
#include <optional>
#include <thread>
#include <vector>

#include "daemon/ApplicationInfo.h"
#include "daemon/ConnectionInfo.h"
#include "daemon/DaemonConnectionDelegate.h"
#include "daemon/DaemonConnectionServerEvent.h"
#include "daemon/TotalStatisticInfo.h"
#include "protocol/LLNC_ClientConnection.h"

/**
 * The one object through which the front end talks to the daemon: typed queries, the cursors that this
 * process has opened, and a thread that brings the daemon's events to a delegate on the main thread.
 *
 * Every query blocks its thread until the daemon has answered, without a limit. A query that cannot be sent
 * gives a failure value: null, 0 bytes, a count of 0, an id of -1. Without a link nothing is sent and the
 * result is the same, but that `countApplications` gives -1. Queries may come from any thread; cursors are
 * made and deleted on the main thread.
 */
class DaemonConnection : public QObject {
  public:
    /**
     * The shared connection, opened on the first call, which belongs to the main thread. It stays what it
     * became then, also without a link, and is destroyed at the process's exit. Never null; the caller does
     * not own it.
     */
    static DaemonConnection* sharedConnection();

    /** True once the exit has destroyed the shared connection: what outlives it has nobody left to tell. */
    static bool isOver();

    DaemonConnection(const DaemonConnection&) = delete;
    DaemonConnection& operator=(const DaemonConnection&) = delete;

    /** True when there is a link. It does not turn false when the daemon is lost later. */
    bool isValid() const { return m_Connection != nullptr; }

    /** Null without a link. */
    LLNC_ClientConnection* connection() const { return m_Connection.get(); }

    /** Ids of the cursors opened and not yet deleted, oldest first. */
    const std::list<std::int32_t>& applicationsIterators() const { return m_ApplicationsIteratorsList; }
    const std::list<std::int32_t>& connectionsIterators() const { return m_ConnectionsIteratorsList; }

    /** The delegate is not owned: it is unset, with null, before it goes. Main thread. */
    DaemonConnectionDelegate* delegate() const { return m_Delegate; }
    void setDelegate(DaemonConnectionDelegate* delegate) { m_Delegate = delegate; }

    std::int32_t createApplicationsIterator();
    std::int32_t createConnectionsIterator();
    void deleteApplicationsIterator(std::int32_t iteratorId);
    void deleteConnectionsIterator(std::int32_t iteratorId);
    void setApplicationIteratorParameters(std::int32_t iteratorId, std::int32_t sortField,
                                          std::int32_t sortDirection);
    void setConnectionIteratorParameters(std::int32_t iteratorId, const QDateTime& startTime,
                                         const QDateTime& endTime, std::int32_t applicationId,
                                         std::int32_t socketProtocol, std::int32_t sortField,
                                         std::int32_t sortDirection);
    std::int32_t countApplications(std::int32_t iteratorId);
    std::int32_t countConnections(std::int32_t iteratorId);

    std::shared_ptr<const ApplicationInfo> applicationInfo(std::int32_t iteratorId, std::int32_t index);
    std::shared_ptr<const ApplicationInfo> applicationInfoFromId(std::int32_t applicationId);
    std::shared_ptr<const ConnectionInfo> connectionInfo(std::int32_t iteratorId, std::int32_t index);
    std::shared_ptr<const TotalStatisticInfo> totalStatisticInfo();

    /**
     * `count` rows of a cursor from `first` on, null where there is none: a request per row, all of them sent
     * before the first answer is awaited.
     */
    std::vector<std::shared_ptr<const ApplicationInfo>> applicationInfos(std::int32_t iteratorId,
                                                                         std::int32_t first,
                                                                         std::int32_t count);
    std::vector<std::shared_ptr<const ConnectionInfo>> connectionInfos(std::int32_t iteratorId,
                                                                       std::int32_t first,
                                                                       std::int32_t count);

    /** Bytes up to a moment. `socketProtocol`: 6 TCP, 17 UDP, -1 all. */
    std::int64_t totalReceivedBytesToTime(const QDateTime& toTime, std::int32_t socketProtocol);
    std::int64_t totalSendedBytesToTime(const QDateTime& toTime, std::int32_t socketProtocol);
    std::int64_t totalReceivedBytesForApplicationId(std::int32_t applicationId, const QDateTime& toTime,
                                                    std::int32_t socketProtocol);
    std::int64_t totalSendedBytesForApplicationId(std::int32_t applicationId, const QDateTime& toTime,
                                                  std::int32_t socketProtocol);

    bool isDaemonCleanDataBase();

    /** Asks the daemon to clean its database. */
    void startCleanDataBase();

    /** Tells the daemon that the settings have changed. */
    void sendConfigChangedEvent();

    /**
     * Returns when the listener thread has ended, looking once a second. Called before the application object goes,
     * whose queue the listener posts to; once more is harmless.
     */
    void stopEventsListener();

  private:
    friend void daemonConnectionSharedInstanceCleaner();

    DaemonConnection();

    /** Deletes the cursors that are still open in the daemon, then closes the link. */
    ~DaemonConnection() override;

    void eventsListenerThread();
    void deliverQueuedEvents();
    void eventOccured(const DaemonConnectionServerEvent& event);

    template <class Reply, class Request>
    std::optional<Reply> ask(const Request& request);
    template <class Request>
    void tell(const Request& request);
    template <class Reply, class Request>
    std::vector<std::optional<Reply>> askForRows(std::int32_t iteratorId, std::int32_t first,
                                                 std::int32_t count);

    std::unique_ptr<LLNC_ClientConnection> m_Connection;
    std::list<std::int32_t> m_ApplicationsIteratorsList;
    std::list<std::int32_t> m_ConnectionsIteratorsList;
    std::atomic<bool> m_EventsListenerNeedStop{false};
    std::atomic<bool> m_IsEventsListenerRunning{false};
    DaemonConnectionDelegate* m_Delegate = nullptr;
    std::thread m_EventsListener;
};
