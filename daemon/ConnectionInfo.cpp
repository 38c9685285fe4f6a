// SPDX-License-Identifier: GPL-3.0-or-later
#include "daemon/ConnectionInfo.h"

ConnectionInfo::ConnectionInfo(std::int32_t id, std::int32_t applicationId, const QDateTime& startTime,
                               const QDateTime& endTime, const QString& direction, std::int32_t socketDomain,
                               std::int32_t socketType, std::int32_t socketProtocol,
                               std::int64_t receivedBytes, std::int64_t sendedBytes,
                               const QString& removeAddress, const QString& localAddress,
                               const IpAddress& remoteEndpoint, const IpAddress& localEndpoint)
    : m_Id(id),
      m_AppId(applicationId),
      m_StartTime(startTime),
      m_EndTime(endTime),
      m_Direction(direction),
      m_SocketDomain(socketDomain),
      m_SocketType(socketType),
      m_SocketProtocol(socketProtocol),
      m_ReceivedBytes(receivedBytes),
      m_SendedBytes(sendedBytes),
      m_RemoteAddress(removeAddress),
      m_LocalAddress(localAddress),
      m_RemoteEndpoint(remoteEndpoint),
      m_LocalEndpoint(localEndpoint) {}

std::shared_ptr<const ConnectionInfo> ConnectionInfo::connectionInfoWithId(
    std::int32_t id, std::int32_t applicationId, const QDateTime& startTime, const QDateTime& endTime,
    const QString& direction, std::int32_t socketDomain, std::int32_t socketType, std::int32_t socketProtocol,
    std::int64_t receivedBytes, std::int64_t sendedBytes, const QString& removeAddress,
    const QString& localAddress, const IpAddress& remoteEndpoint, const IpAddress& localEndpoint) {
    return std::make_shared<const ConnectionInfo>(
        id, applicationId, startTime, endTime, direction, socketDomain, socketType, socketProtocol,
        receivedBytes, sendedBytes, removeAddress, localAddress, remoteEndpoint, localEndpoint);
}
