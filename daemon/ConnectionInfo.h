// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDateTime>
#include <QString>
#include <cstdint>
#include <memory>

#include "libs/utils/src/IpAddress.h"

/** One network connection of an application. Never changes; any thread. */
class ConnectionInfo {
  public:
    /** An address of no known family, which is what a record that was not told has. */
    static constexpr IpAddress unknownEndpoint{.family = -1};

    /** Ids, domain, type and protocol -1, no bytes, everything else null. */
    ConnectionInfo() = default;
    ConnectionInfo(std::int32_t id, std::int32_t applicationId, const QDateTime& startTime,
                   const QDateTime& endTime, const QString& direction, std::int32_t socketDomain,
                   std::int32_t socketType, std::int32_t socketProtocol, std::int64_t receivedBytes,
                   std::int64_t sendedBytes, const QString& removeAddress, const QString& localAddress,
                   const IpAddress& remoteEndpoint = unknownEndpoint,
                   const IpAddress& localEndpoint = unknownEndpoint);

    static std::shared_ptr<const ConnectionInfo> connectionInfoWithId(
        std::int32_t id, std::int32_t applicationId, const QDateTime& startTime, const QDateTime& endTime,
        const QString& direction, std::int32_t socketDomain, std::int32_t socketType,
        std::int32_t socketProtocol, std::int64_t receivedBytes, std::int64_t sendedBytes,
        const QString& removeAddress, const QString& localAddress,
        const IpAddress& remoteEndpoint = unknownEndpoint, const IpAddress& localEndpoint = unknownEndpoint);

    std::int32_t id() const { return m_Id; }
    std::int32_t applicationId() const { return m_AppId; }
    QDateTime startTime() const { return m_StartTime; }
    QDateTime endTime() const { return m_EndTime; }

    /** "Input", "Output", "Undefined", or null for a direction of no known kind. */
    QString direction() const { return m_Direction; }

    /** Address family, type and protocol of the socket, as the daemon numbers them. */
    std::int32_t socketDomain() const { return m_SocketDomain; }
    std::int32_t socketType() const { return m_SocketType; }
    std::int32_t socketProtocol() const { return m_SocketProtocol; }

    std::int64_t receivedBytes() const { return m_ReceivedBytes; }
    std::int64_t sendedBytes() const { return m_SendedBytes; }

    /** Decimal bytes joined by full stops, without the port. */
    QString remoteAddress() const { return m_RemoteAddress; }
    QString localAddress() const { return m_LocalAddress; }

    /** The same addresses as numbers, with their ports. */
    const IpAddress& remoteEndpoint() const { return m_RemoteEndpoint; }
    const IpAddress& localEndpoint() const { return m_LocalEndpoint; }

  private:
    std::int32_t m_Id = -1;
    std::int32_t m_AppId = -1;
    QDateTime m_StartTime;
    QDateTime m_EndTime;
    QString m_Direction;
    std::int32_t m_SocketDomain = -1;
    std::int32_t m_SocketType = -1;
    std::int32_t m_SocketProtocol = -1;
    std::int64_t m_ReceivedBytes = 0;
    std::int64_t m_SendedBytes = 0;
    QString m_RemoteAddress;
    QString m_LocalAddress;
    IpAddress m_RemoteEndpoint = unknownEndpoint;
    IpAddress m_LocalEndpoint = unknownEndpoint;
};
