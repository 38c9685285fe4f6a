// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDateTime>
#include <QIcon>
#include <QString>
#include <cstdint>
#include <memory>

/**
 * One monitored application with its bytes. Never changes but for the bundle path that it remembers:
 * `bundlePath` and `icon` are for the main thread, the rest for any.
 */
class ApplicationInfo {
  public:
    /** Id -1, everything else zero or null. */
    ApplicationInfo() = default;
    ApplicationInfo(std::int32_t id, const QString& name, const QString& fullPath,
                    std::int64_t totalReveivedBytes, std::int64_t totalSendedBytes,
                    std::int64_t tcpReceivedBytes, std::int64_t tcpSendedBytes, std::int64_t udpReceivedBytes,
                    std::int64_t udpSendedBytes, const QDateTime& startTime, const QDateTime& endTime);

    static std::shared_ptr<const ApplicationInfo> appInfoWithId(
        std::int32_t id, const QString& name, const QString& fullPath, std::int64_t totalReveivedBytes,
        std::int64_t totalSendedBytes, std::int64_t tcpReceivedBytes, std::int64_t tcpSendedBytes,
        std::int64_t udpReceivedBytes, std::int64_t udpSendedBytes, const QDateTime& startTime,
        const QDateTime& endTime);

    std::int32_t id() const { return m_Id; }
    QString name() const { return m_Name; }

    /** Full path of the executable; empty for the kernel. */
    QString fullPath() const { return m_FullPath; }

    std::int64_t totalReceivedBytes() const { return m_TotalReceivedBytes; }
    std::int64_t totalSendedBytes() const { return m_TotalSendedBytes; }
    std::int64_t tcpReceivedBytes() const { return m_TcpReceivedBytes; }
    std::int64_t tcpSendedBytes() const { return m_TcpSendedBytes; }
    std::int64_t udpReceivedBytes() const { return m_UdpReveivedBytes; }
    std::int64_t udpSendedBytes() const { return m_UdpSendedBytes; }

    /** What is neither TCP nor UDP; negative when the daemon's parts exceed its total. */
    std::int64_t otherReceivedBytes() const;
    std::int64_t otherSendedBytes() const;

    /** First and last traffic. */
    QDateTime startTime() const { return m_StartTime; }
    QDateTime endTime() const { return m_EndTime; }

    bool isApplicationBundle() const;
    bool isFrameworkBundle() const;
    bool isUnknownBundle() const;

    /** An application's or a framework's bundle; an unknown bundle does not count, on purpose. */
    bool isBundle() const;

    /**
     * The path up to the end of the first bundle in it; the full path when there is none; "/mach_kernel" for
     * the kernel.
     */
    QString bundlePath() const;

    QIcon icon() const;

  private:
    std::int32_t m_Id = -1;
    QString m_Name;
    QString m_FullPath;
    mutable QString m_BundlePath;  ///< null until it is known
    std::int64_t m_TotalReceivedBytes = 0;
    std::int64_t m_TotalSendedBytes = 0;
    std::int64_t m_TcpReceivedBytes = 0;
    std::int64_t m_TcpSendedBytes = 0;
    std::int64_t m_UdpReveivedBytes = 0;
    std::int64_t m_UdpSendedBytes = 0;
    QDateTime m_StartTime;
    QDateTime m_EndTime;
};
