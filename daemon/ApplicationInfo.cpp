// SPDX-License-Identifier: GPL-3.0-or-later
#include "daemon/ApplicationInfo.h"

#include "platform/WorkspaceIcons.h"

namespace {

const QString applicationBundleSignature = QStringLiteral(".app/");
const QString frameworkBundleSignature = QStringLiteral(".framework/");
const QString unknownBundleSignature = QStringLiteral(".bundle/");
const QString kernelPath = QStringLiteral("/mach_kernel");

}  // namespace

ApplicationInfo::ApplicationInfo(std::int32_t id, const QString& name, const QString& fullPath,
                                 std::int64_t totalReveivedBytes, std::int64_t totalSendedBytes,
                                 std::int64_t tcpReceivedBytes, std::int64_t tcpSendedBytes,
                                 std::int64_t udpReceivedBytes, std::int64_t udpSendedBytes,
                                 const QDateTime& startTime, const QDateTime& endTime)
    : m_Id(id),
      m_Name(name),
      m_FullPath(fullPath),
      m_TotalReceivedBytes(totalReveivedBytes),
      m_TotalSendedBytes(totalSendedBytes),
      m_TcpReceivedBytes(tcpReceivedBytes),
      m_TcpSendedBytes(tcpSendedBytes),
      m_UdpReveivedBytes(udpReceivedBytes),
      m_UdpSendedBytes(udpSendedBytes),
      m_StartTime(startTime),
      m_EndTime(endTime) {}

std::shared_ptr<const ApplicationInfo> ApplicationInfo::appInfoWithId(
    std::int32_t id, const QString& name, const QString& fullPath, std::int64_t totalReveivedBytes,
    std::int64_t totalSendedBytes, std::int64_t tcpReceivedBytes, std::int64_t tcpSendedBytes,
    std::int64_t udpReceivedBytes, std::int64_t udpSendedBytes, const QDateTime& startTime,
    const QDateTime& endTime) {
    return std::make_shared<const ApplicationInfo>(id, name, fullPath, totalReveivedBytes, totalSendedBytes,
                                                   tcpReceivedBytes, tcpSendedBytes, udpReceivedBytes,
                                                   udpSendedBytes, startTime, endTime);
}

std::int64_t ApplicationInfo::otherReceivedBytes() const {
    return m_TotalReceivedBytes - m_TcpReceivedBytes - m_UdpReveivedBytes;
}

std::int64_t ApplicationInfo::otherSendedBytes() const {
    return m_TotalSendedBytes - m_TcpSendedBytes - m_UdpSendedBytes;
}

bool ApplicationInfo::isApplicationBundle() const {
    return m_FullPath.contains(applicationBundleSignature);
}

bool ApplicationInfo::isFrameworkBundle() const {
    return m_FullPath.contains(frameworkBundleSignature);
}

bool ApplicationInfo::isUnknownBundle() const {
    return m_FullPath.contains(unknownBundleSignature);
}

bool ApplicationInfo::isBundle() const {
    return isApplicationBundle() || isFrameworkBundle();
}

QString ApplicationInfo::bundlePath() const {
    if (!m_BundlePath.isNull()) {
        return m_BundlePath;
    }
    if (m_FullPath.isEmpty()) {
        return m_BundlePath = kernelPath;
    }
    for (const QString& signature :
         {applicationBundleSignature, frameworkBundleSignature, unknownBundleSignature}) {
        const qsizetype position = m_FullPath.indexOf(signature);
        if (position >= 0) {
            return m_BundlePath = m_FullPath.left(position + signature.length() - 1);
        }
    }
    return m_FullPath;
}

QIcon ApplicationInfo::icon() const {
    return m_FullPath.isEmpty() ? WorkspaceIcons::iconForFileType(QStringLiteral("bundle"))
                                : WorkspaceIcons::iconForFile(bundlePath());
}
