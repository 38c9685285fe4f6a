// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDateTime>
#include <cstdint>
#include <memory>

/** The sums over all applications, in bytes. Never changes; any thread. */
class TotalStatisticInfo {
  public:
    TotalStatisticInfo() = default;
    TotalStatisticInfo(std::int64_t totalReceivedBytes, std::int64_t totalSendedBytes,
                       std::int64_t tcpReceivedBytes, std::int64_t tcpSendedBytes,
                       std::int64_t udpReceivedBytes, std::int64_t udpSendedBytes,
                       const QDateTime& startTime);

    static std::shared_ptr<const TotalStatisticInfo> statisticInfoWithTotalReceivedBytes(
        std::int64_t totalReceivedBytes, std::int64_t totalSendedBytes, std::int64_t tcpReceivedBytes,
        std::int64_t tcpSendedBytes, std::int64_t udpReceivedBytes, std::int64_t udpSendedBytes,
        const QDateTime& startTime);

    std::int64_t totalReceivedBytes() const { return m_TotalReceivedBytes; }
    std::int64_t totalSendedBytes() const { return m_TotalSendedBytes; }
    std::int64_t tcpReceivedBytes() const { return m_TcpReceivedBytes; }
    std::int64_t tcpSendedBytes() const { return m_TcpSendedBytes; }
    std::int64_t udpReceivedBytes() const { return m_UdpReceivedBytes; }
    std::int64_t udpSendedBytes() const { return m_UdpSendedBytes; }

    /** What is neither TCP nor UDP; negative when the daemon's parts exceed its total. */
    std::int64_t otherReceivedBytes() const;
    std::int64_t otherSendedBytes() const;

    QDateTime startTime() const { return m_StartTime; }

    /** The moment of the call: sums stand for now. */
    QDateTime endTime() const { return QDateTime::currentDateTime(); }

  private:
    std::int64_t m_TotalReceivedBytes = 0;
    std::int64_t m_TotalSendedBytes = 0;
    std::int64_t m_TcpReceivedBytes = 0;
    std::int64_t m_TcpSendedBytes = 0;
    std::int64_t m_UdpReceivedBytes = 0;
    std::int64_t m_UdpSendedBytes = 0;
    QDateTime m_StartTime;
};
