// SPDX-License-Identifier: GPL-3.0-or-later
#include "daemon/DaemonConnection.h"

#include <algorithm>
#include <cassert>
#include <chrono>
#include <cstdlib>
#include <iterator>
#include <utility>

#include "daemon/DateConversion.h"
#include "libs/utils/src/StringUtils.h"
#include "net/IPv4SocketAddress.h"
#include "protocol/DaemonApplicationInfo.h"
#include "protocol/DaemonApplicationInfoFromIdRequest.h"
#include "protocol/DaemonApplicationReceivedBytesReply.h"
#include "protocol/DaemonApplicationReceivedBytesRequest.h"
#include "protocol/DaemonApplicationSendedBytesReply.h"
#include "protocol/DaemonApplicationSendedBytesRequest.h"
#include "protocol/DaemonConnectionInfo.h"
#include "protocol/DaemonCreateApplicationIteratorReply.h"
#include "protocol/DaemonCreateApplicationIteratorRequest.h"
#include "protocol/DaemonCreateConnectionsIteratorReply.h"
#include "protocol/DaemonCreateConnectionsIteratorRequest.h"
#include "protocol/DaemonDeleteApplicationsIteratorRequest.h"
#include "protocol/DaemonDeleteConnectionsIteratorRequest.h"
#include "protocol/DaemonGetApplicationInfoRequest.h"
#include "protocol/DaemonGetConnectionInfoRequest.h"
#include "protocol/DaemonGetCountApplicationsReply.h"
#include "protocol/DaemonGetCountApplicationsRequest.h"
#include "protocol/DaemonGetCountConnectionsReply.h"
#include "protocol/DaemonGetCountConnectionsRequest.h"
#include "protocol/DaemonIsServerCleanDataBaseReply.h"
#include "protocol/DaemonIsServerCleanDataBaseRequest.h"
#include "protocol/DaemonSetApplicatonsIteratorParametersRequest.h"
#include "protocol/DaemonSetConnectionsIteratorParametersRequest.h"
#include "protocol/DaemonTotalReceivedBytesRequest.h"
#include "protocol/DaemonTotalSendedBytesReply.h"
#include "protocol/DaemonTotalSendedBytesRequest.h"
#include "protocol/DaemonTotalStatisticInfo.h"
#include "protocol/DaemonTotalStatisticInfoRequest.h"
#include "protocol/DeamonTotalReceivedBytesReply.h"
#include "threads/ThreadSignals.h"

namespace {

using namespace std::chrono_literals;

constexpr unsigned short daemonPort = 10023;
constexpr int daemonModule = 0;
constexpr auto eventPollInterval = 50ms;
constexpr auto eventPause = 1s;  // after every delivered event: a burst reaches the user at this pace
constexpr auto listenerStopPoll = 1s;

/** Events in both directions. On the wire: never renumber. */
enum ServerEvent { NewApplication = 0, StartClean = 1, CleanStarted = 2, CleanEnded = 3, ConfigChanged = 4 };

DaemonConnection* sSharedDaemonConnection = nullptr;
bool sIsDaemonConnectionOver = false;  // at exit; it is never made again

QString directionText(std::int32_t direction) {
    switch (direction) {
        case 0:
            return QStringLiteral("Input");
        case 1:
            return QStringLiteral("Output");
        case 2:
            return QStringLiteral("Undefined");
        default:
            return {};
    }
}

std::shared_ptr<const ApplicationInfo> recordOf(const DaemonApplicationInfo& wire) {
    return ApplicationInfo::appInfoWithId(
        wire.id, QString::fromStdString(wire.name), QString::fromStdString(wire.fullPath),
        wire.totalReceivedBytes, wire.totalSendedBytes, wire.tcpReceivedBytes, wire.tcpSendedBytes,
        wire.udpReceivedBytes, wire.udpSendedBytes, TimeToNSDate(wire.startTime), TimeToNSDate(wire.endTime));
}

std::shared_ptr<const ConnectionInfo> recordOf(const DaemonConnectionInfo& wire) {
    return ConnectionInfo::connectionInfoWithId(
        wire.id, wire.applicationId, TimeToNSDate(wire.startTime), TimeToNSDate(wire.endTime),
        directionText(wire.direction), wire.socketDomain, wire.socketType, wire.socketProtocol,
        wire.receivedBytes, wire.sendedBytes, QString::fromStdString(ipToString(wire.remoteAddress)),
        QString::fromStdString(ipToString(wire.localAddress)), wire.remoteAddress, wire.localAddress);
}

std::shared_ptr<const TotalStatisticInfo> recordOf(const DaemonTotalStatisticInfo& wire) {
    return TotalStatisticInfo::statisticInfoWithTotalReceivedBytes(
        wire.totalReceivedBytes, wire.totalSendedBytes, wire.tcpReceivedBytes, wire.tcpSendedBytes,
        wire.udpReceivedBytes, wire.udpSendedBytes, TimeToNSDate(wire.startTime));
}

template <class Wire>
auto recordOf(const std::optional<Wire>& wire) -> decltype(recordOf(*wire)) {
    return wire ? recordOf(*wire) : nullptr;
}

template <class Wire>
auto recordsOf(const std::vector<std::optional<Wire>>& rows) {
    std::vector<decltype(recordOf(*rows.front()))> records;
    records.reserve(rows.size());
    std::transform(rows.begin(), rows.end(), std::back_inserter(records),
                   [](const auto& row) { return recordOf(row); });
    return records;
}

template <class Request>
Request cursorRequest(std::int32_t iteratorId) {
    Request request;
    request.iteratorId = iteratorId;
    return request;
}

template <class Request>
Request bytesRequest(const QDateTime& toTime, std::int32_t socketProtocol) {
    Request request;
    request.toTime = NSDateToTime(toTime);
    request.socketProtocol = socketProtocol;
    return request;
}

template <class Reply>
std::int64_t bytesOf(const std::optional<Reply>& reply) {
    return reply ? reply->bytes : 0;
}

}  // namespace

void daemonConnectionSharedInstanceCleaner() {
    if (sSharedDaemonConnection != nullptr) {
        sSharedDaemonConnection->stopEventsListener();
        delete sSharedDaemonConnection;
    }
}

DaemonConnection* DaemonConnection::sharedConnection() {
    assert(!sIsDaemonConnectionOver);
    if (sSharedDaemonConnection == nullptr) {
        sSharedDaemonConnection = new DaemonConnection;
        std::atexit(daemonConnectionSharedInstanceCleaner);
    }
    return sSharedDaemonConnection;
}

bool DaemonConnection::isOver() {
    return sIsDaemonConnectionOver;
}

DaemonConnection::DaemonConnection()
    : m_Connection(std::make_unique<LLNC_ClientConnection>(
          Net::IPv4SocketAddress(Net::IPv4Address(0, 0, 0, 0), daemonPort))) {
    if (!m_Connection->GetSocket().isValid()) {
        m_Connection = nullptr;
        return;
    }
    m_IsEventsListenerRunning = true;
    m_EventsListener = std::thread(&DaemonConnection::eventsListenerThread, this);
}

DaemonConnection::~DaemonConnection() {
    sSharedDaemonConnection = nullptr;
    sIsDaemonConnectionOver = true;
    while (!m_ApplicationsIteratorsList.empty()) {
        deleteApplicationsIterator(m_ApplicationsIteratorsList.front());
    }
    while (!m_ConnectionsIteratorsList.empty()) {
        deleteConnectionsIterator(m_ConnectionsIteratorsList.front());
    }
}

/** Nothing without a link, when the request cannot be sent and when its reply is too short. */
template <class Reply, class Request>
std::optional<Reply> DaemonConnection::ask(const Request& request) {
    std::optional<Reply> reply(std::in_place);
    if (m_Connection == nullptr || !m_Connection->SendMessage(request, *reply, daemonModule)) {
        reply.reset();
    }
    return reply;
}

template <class Request>
void DaemonConnection::tell(const Request& request) {
    if (m_Connection != nullptr) {
        m_Connection->SendMessage(request, daemonModule);
    }
}

template <class Reply, class Request>
std::vector<std::optional<Reply>> DaemonConnection::askForRows(std::int32_t iteratorId, std::int32_t first,
                                                               std::int32_t count) {
    std::vector<std::optional<Reply>> rows(std::max(count, 0));
    if (m_Connection == nullptr) {
        return rows;
    }
    std::vector<int> messageIds;
    for (std::int32_t i = 0; i < count; ++i) {
        auto request = cursorRequest<Request>(iteratorId);
        request.index = first + i;
        messageIds.push_back(m_Connection->SendMessage(request, daemonModule));
        if (messageIds.back() < 0) {
            return rows;  // the daemon is gone: replies to the requests before may never come
        }
    }
    for (std::size_t i = 0; i < rows.size(); ++i) {
        if (!m_Connection->WaitReply(messageIds[i], rows[i].emplace())) {
            rows[i].reset();
        }
    }
    return rows;
}

std::int32_t DaemonConnection::createApplicationsIterator() {
    const auto reply = ask<DaemonCreateApplicationIteratorReply>(DaemonCreateApplicationIteratorRequest());
    return reply ? m_ApplicationsIteratorsList.emplace_back(reply->iteratorId) : -1;
}

std::int32_t DaemonConnection::createConnectionsIterator() {
    const auto reply = ask<DaemonCreateConnectionsIteratorReply>(DaemonCreateConnectionsIteratorRequest());
    return reply ? m_ConnectionsIteratorsList.emplace_back(reply->iteratorId) : -1;
}

void DaemonConnection::deleteApplicationsIterator(std::int32_t iteratorId) {
    tell(cursorRequest<DaemonDeleteApplicationsIteratorRequest>(iteratorId));
    m_ApplicationsIteratorsList.remove(iteratorId);
}

void DaemonConnection::deleteConnectionsIterator(std::int32_t iteratorId) {
    tell(cursorRequest<DaemonDeleteConnectionsIteratorRequest>(iteratorId));
    m_ConnectionsIteratorsList.remove(iteratorId);
}

void DaemonConnection::setApplicationIteratorParameters(std::int32_t iteratorId, std::int32_t sortField,
                                                        std::int32_t sortDirection) {
    auto request = cursorRequest<DaemonSetApplicatonsIteratorParametersRequest>(iteratorId);
    request.sortDirection = sortDirection;
    request.sortField = sortField;
    tell(request);
}

void DaemonConnection::setConnectionIteratorParameters(std::int32_t iteratorId, const QDateTime& startTime,
                                                       const QDateTime& endTime, std::int32_t applicationId,
                                                       std::int32_t socketProtocol, std::int32_t sortField,
                                                       std::int32_t sortDirection) {
    auto request = cursorRequest<DaemonSetConnectionsIteratorParametersRequest>(iteratorId);
    request.startTime = NSDateToTime(startTime);
    request.endTime = NSDateToTime(endTime);
    request.applicationId = applicationId;
    request.socketProtocol = socketProtocol;
    request.sortDirection = sortDirection;
    request.sortField = sortField;
    tell(request);
}

/** Differs from `countConnections` without a link on purpose: a table adds its totals row to this one. */
std::int32_t DaemonConnection::countApplications(std::int32_t iteratorId) {
    if (m_Connection == nullptr) {
        return -1;
    }
    const auto reply =
        ask<DaemonGetCountApplicationsReply>(cursorRequest<DaemonGetCountApplicationsRequest>(iteratorId));
    return reply ? reply->count : 0;
}

std::int32_t DaemonConnection::countConnections(std::int32_t iteratorId) {
    const auto reply =
        ask<DaemonGetCountConnectionsReply>(cursorRequest<DaemonGetCountConnectionsRequest>(iteratorId));
    return reply ? reply->count : 0;
}

std::shared_ptr<const ApplicationInfo> DaemonConnection::applicationInfo(std::int32_t iteratorId,
                                                                         std::int32_t index) {
    auto request = cursorRequest<DaemonGetApplicationInfoRequest>(iteratorId);
    request.index = index;
    return recordOf(ask<DaemonApplicationInfo>(request));
}

std::shared_ptr<const ApplicationInfo> DaemonConnection::applicationInfoFromId(std::int32_t applicationId) {
    DaemonApplicationInfoFromIdRequest request;
    request.applicationId = applicationId;
    return recordOf(ask<DaemonApplicationInfo>(request));
}

std::shared_ptr<const ConnectionInfo> DaemonConnection::connectionInfo(std::int32_t iteratorId,
                                                                       std::int32_t index) {
    auto request = cursorRequest<DaemonGetConnectionInfoRequest>(iteratorId);
    request.index = index;
    return recordOf(ask<DaemonConnectionInfo>(request));
}

std::shared_ptr<const TotalStatisticInfo> DaemonConnection::totalStatisticInfo() {
    return recordOf(ask<DaemonTotalStatisticInfo>(DaemonTotalStatisticInfoRequest()));
}

std::vector<std::shared_ptr<const ApplicationInfo>> DaemonConnection::applicationInfos(
    std::int32_t iteratorId, std::int32_t first, std::int32_t count) {
    return recordsOf(
        askForRows<DaemonApplicationInfo, DaemonGetApplicationInfoRequest>(iteratorId, first, count));
}

std::vector<std::shared_ptr<const ConnectionInfo>> DaemonConnection::connectionInfos(std::int32_t iteratorId,
                                                                                     std::int32_t first,
                                                                                     std::int32_t count) {
    return recordsOf(
        askForRows<DaemonConnectionInfo, DaemonGetConnectionInfoRequest>(iteratorId, first, count));
}

std::int64_t DaemonConnection::totalReceivedBytesToTime(const QDateTime& toTime,
                                                        std::int32_t socketProtocol) {
    return bytesOf(ask<DeamonTotalReceivedBytesReply>(
        bytesRequest<DaemonTotalReceivedBytesRequest>(toTime, socketProtocol)));
}

std::int64_t DaemonConnection::totalSendedBytesToTime(const QDateTime& toTime, std::int32_t socketProtocol) {
    return bytesOf(ask<DaemonTotalSendedBytesReply>(
        bytesRequest<DaemonTotalSendedBytesRequest>(toTime, socketProtocol)));
}

std::int64_t DaemonConnection::totalReceivedBytesForApplicationId(std::int32_t applicationId,
                                                                  const QDateTime& toTime,
                                                                  std::int32_t socketProtocol) {
    auto request = bytesRequest<DaemonApplicationReceivedBytesRequest>(toTime, socketProtocol);
    request.applicationId = applicationId;
    return bytesOf(ask<DaemonApplicationReceivedBytesReply>(request));
}

std::int64_t DaemonConnection::totalSendedBytesForApplicationId(std::int32_t applicationId,
                                                                const QDateTime& toTime,
                                                                std::int32_t socketProtocol) {
    auto request = bytesRequest<DaemonApplicationSendedBytesRequest>(toTime, socketProtocol);
    request.applicationId = applicationId;
    return bytesOf(ask<DaemonApplicationSendedBytesReply>(request));
}

bool DaemonConnection::isDaemonCleanDataBase() {
    const auto reply = ask<DaemonIsServerCleanDataBaseReply>(DaemonIsServerCleanDataBaseRequest());
    return reply && reply->isClean;
}

void DaemonConnection::startCleanDataBase() {
    if (m_Connection != nullptr) {
        m_Connection->SendEvent(StartClean, 0, daemonModule);
    }
}

void DaemonConnection::sendConfigChangedEvent() {
    if (m_Connection != nullptr) {
        m_Connection->SendEvent(ConfigChanged, 0, daemonModule);
    }
}

void DaemonConnection::stopEventsListener() {
    m_EventsListenerNeedStop = true;
    while (m_IsEventsListenerRunning) {
        std::this_thread::sleep_for(listenerStopPoll);
    }
    if (m_EventsListener.joinable()) {
        m_EventsListener.join();
    }
}

void DaemonConnection::eventsListenerThread() {
    blockThreadSignals();
    while (!m_EventsListenerNeedStop) {
        std::this_thread::sleep_for(eventPollInterval);
        deliverQueuedEvents();
    }
    m_IsEventsListenerRunning = false;
}

void DaemonConnection::deliverQueuedEvents() {
    while (m_Connection->IsEventOccured() && !m_EventsListenerNeedStop) {
        const LLNC_ClientConnection::Event event = m_Connection->GetNextEvent();
        const DaemonConnectionServerEvent serverEvent{event.moduleId, event.eventId, event.param};
        QMetaObject::invokeMethod(
            this, [this, serverEvent] { eventOccured(serverEvent); }, Qt::QueuedConnection);
        std::this_thread::sleep_for(eventPause);
    }
}

void DaemonConnection::eventOccured(const DaemonConnectionServerEvent& event) {
    if (m_Delegate == nullptr) {
        return;
    }
    switch (event.eventId) {
        case NewApplication:
            m_Delegate->newApplicationAdded(applicationInfoFromId(event.param));
            break;
        case CleanStarted:
            m_Delegate->daemonStartCleanDataBase();
            break;
        case CleanEnded:
            m_Delegate->daemonEndCleanDataBase();
            break;
        default:
            break;
    }
}
