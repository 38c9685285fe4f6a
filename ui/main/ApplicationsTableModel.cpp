// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/main/ApplicationsTableModel.h"

#include <algorithm>
#include <array>
#include <utility>

#include "platform/WorkspaceIcons.h"
#include "ui/applications/PlainText.h"
#include "ui/charts/TrafficFormat.h"

namespace {

#ifdef Q_OS_MACOS
const QString applicationsFolder = QStringLiteral("/Applications");
#else
const QString applicationsFolder = QStringLiteral("/usr/share/applications");
#endif

constexpr std::array<ColumnTableModel::ColumnHeader, ApplicationsTableModel::ColumnCount> headers{{
    {"#", Qt::AlignRight},
    {"", Qt::AlignLeft, "Icon"},
    {"Name"},
    {"Path"},
    {"Received, MB", Qt::AlignRight},
    {"Sent, MB", Qt::AlignRight},
    {"Last activity"},
}};

double shareOf(std::int64_t part, std::int64_t whole) {
    return whole > 0 ? std::clamp(static_cast<double>(part) / static_cast<double>(whole), 0.0, 1.0) : 0.0;
}

}  // namespace

ApplicationsTableModel::ApplicationsTableModel(Fetch fetch, QObject* parent)
    : FetchedTableModel(headers, std::move(fetch), TotalsRow + 1, parent),
      m_Totals(std::make_shared<const TotalStatisticInfo>()) {}

void ApplicationsTableModel::refresh(std::int32_t applications,
                                     std::shared_ptr<const TotalStatisticInfo> totals) {
    m_Totals = totals != nullptr ? std::move(totals) : std::make_shared<const TotalStatisticInfo>();
    m_TotalsEnd = m_Totals->endTime();
    refreshRows(applications + 1);
}

QVariant ApplicationsTableModel::data(const QModelIndex& index, int role) const {
    const int row = index.row();
    const int column = index.column();
    if (role == Qt::TextAlignmentRole) {
        return alignment(column);
    }
    if (role == (column == IconColumn ? Qt::DecorationRole : Qt::DisplayRole)) {
        return fieldValue(row, column);
    }
    const auto application = knownRecord(row);
    if (role == Qt::ToolTipRole) {
        return column == PathColumn && application != nullptr ? PlainText::singleLine(application->fullPath())
                                                              : fieldValue(row, column).toString();
    }
    return role == ShareRole && application != nullptr ? share(*application, column) : QVariant();
}

QVariant ApplicationsTableModel::fieldValue(int row, int column) const {
    if (row == TotalsRow) {
        return totalStatisticFieldValue(column);
    }
    const auto application = knownRecord(row);
    return application != nullptr ? applicationFieldValue(row, *application, column) : QVariant();
}

QVariant ApplicationsTableModel::totalStatisticFieldValue(int column) const {
    switch (column) {
        case NumberColumn:
            return "1";
        case IconColumn:
            return WorkspaceIcons::iconForFile(applicationsFolder);
        case NameColumn:
            return "Full Traffic";
        case PathColumn:
            return "No Path";
        case ReceivedColumn:
            return bytesToNSString(m_Totals->totalReceivedBytes());
        case SentColumn:
            return bytesToNSString(m_Totals->totalSendedBytes());
        case LastActivityColumn:
            return NSDateToNSString(m_TotalsEnd);
        default:
            return {};
    }
}

QVariant ApplicationsTableModel::applicationFieldValue(int row, const ApplicationInfo& application,
                                                       int column) {
    switch (column) {
        case NumberColumn:
            return QString::number(row + 1);
        case IconColumn:
            return application.icon();
        case NameColumn:
            return PlainText::singleLine(application.name());
        case PathColumn:
            return PlainText::singleLine(application.bundlePath());
        case ReceivedColumn:
            return bytesToNSString(application.totalReceivedBytes());
        case SentColumn:
            return bytesToNSString(application.totalSendedBytes());
        case LastActivityColumn:
            return NSDateToNSString(application.endTime());
        default:
            return {};
    }
}

QVariant ApplicationsTableModel::share(const ApplicationInfo& application, int column) const {
    switch (column) {
        case ReceivedColumn:
            return shareOf(application.totalReceivedBytes(), m_Totals->totalReceivedBytes());
        case SentColumn:
            return shareOf(application.totalSendedBytes(), m_Totals->totalSendedBytes());
        default:
            return {};
    }
}
