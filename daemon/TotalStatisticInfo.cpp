// SPDX-License-Identifier: GPL-3.0-or-later
#include "daemon/TotalStatisticInfo.h"

TotalStatisticInfo::TotalStatisticInfo(std::int64_t totalReceivedBytes, std::int64_t totalSendedBytes,
                                       std::int64_t tcpReceivedBytes, std::int64_t tcpSendedBytes,
                                       std::int64_t udpReceivedBytes, std::int64_t udpSendedBytes,
                                       const QDateTime& startTime)
    : m_TotalReceivedBytes(totalReceivedBytes),
      m_TotalSendedBytes(totalSendedBytes),
      m_TcpReceivedBytes(tcpReceivedBytes),
      m_TcpSendedBytes(tcpSendedBytes),
      m_UdpReceivedBytes(udpReceivedBytes),
      m_UdpSendedBytes(udpSendedBytes),
      m_StartTime(startTime) {}

std::shared_ptr<const TotalStatisticInfo> TotalStatisticInfo::statisticInfoWithTotalReceivedBytes(
    std::int64_t totalReceivedBytes, std::int64_t totalSendedBytes, std::int64_t tcpReceivedBytes,
    std::int64_t tcpSendedBytes, std::int64_t udpReceivedBytes, std::int64_t udpSendedBytes,
    const QDateTime& startTime) {
    return std::make_shared<const TotalStatisticInfo>(totalReceivedBytes, totalSendedBytes, tcpReceivedBytes,
                                                      tcpSendedBytes, udpReceivedBytes, udpSendedBytes,
                                                      startTime);
}

std::int64_t TotalStatisticInfo::otherReceivedBytes() const {
    return m_TotalReceivedBytes - m_TcpReceivedBytes - m_UdpReceivedBytes;
}

std::int64_t TotalStatisticInfo::otherSendedBytes() const {
    return m_TotalSendedBytes - m_TcpSendedBytes - m_UdpSendedBytes;
}
