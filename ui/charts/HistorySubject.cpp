// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/charts/HistorySubject.h"

#include "daemon/ApplicationInfo.h"
#include "ui/applications/PlainText.h"

QString HistorySubject::graphicTitle() const {
    constexpr std::int32_t tcp = 6;
    constexpr std::int32_t udp = 17;
    switch (m_SocketProtocol) {
        case tcp:
            return "TCP Traffic";
        case udp:
            return "UDP Traffic";
        default:
            return "Full Traffic";
    }
}

QString HistorySubject::text() const {
    return graphicTitle() + " of " +
           (m_Application != nullptr ? PlainText::singleLine(m_Application->name()) : "All Applications");
}

QString HistorySubject::windowTitle() const {
    return m_Application != nullptr
               ? PlainText::windowTitle(
                     QStringLiteral("\"%1\" Application Graphic").arg(m_Application->name()))
               : QStringLiteral("Total Graphic");
}

QString HistorySubject::filePath() const {
    return m_Application != nullptr ? m_Application->bundlePath() : "/Applications";
}
