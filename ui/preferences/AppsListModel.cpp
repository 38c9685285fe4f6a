// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/preferences/AppsListModel.h"

#include <array>

#include "ui/applications/PlainText.h"

namespace {

constexpr std::array<ColumnTableModel::ColumnHeader, AppsListModel::ColumnCount> headers{{
    {"", Qt::AlignLeft, "Icon"},
    {"Name"},
    {"Path"},
}};

/** What has no name of its own is called by its path. */
QString text(const AppListEntry& entry, int column) {
    switch (column) {
        case AppsListModel::NameColumn:
            return PlainText::singleLine(entry.name().isEmpty() ? entry.bundlePath() : entry.name());
        case AppsListModel::BundlePathColumn:
            return PlainText::singleLine(entry.bundlePath());
        default:
            return {};
    }
}

}  // namespace

AppsListModel::AppsListModel(QObject* parent) : ColumnTableModel(headers, parent) {}

void AppsListModel::setEntries(const QList<AppListEntry>& entries) {
    beginResetModel();
    m_Entries = entries;
    endResetModel();
}

void AppsListModel::append(const AppListEntry& entry) {
    const int row = rowCount();
    beginInsertRows({}, row, row);
    m_Entries.append(entry);
    endInsertRows();
}

void AppsListModel::removeAt(int row) {
    beginRemoveRows({}, row, row);
    m_Entries.removeAt(row);
    endRemoveRows();
}

bool AppsListModel::contains(const QString& bundlePath) const {
    return bundlePaths().contains(bundlePath);
}

QStringList AppsListModel::bundlePaths() const {
    QStringList paths;
    for (const AppListEntry& entry : m_Entries) {
        paths << entry.bundlePath();
    }
    return paths;
}

int AppsListModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(m_Entries.size());
}

QVariant AppsListModel::data(const QModelIndex& index, int role) const {
    const AppListEntry& entry = m_Entries[index.row()];
    switch (role) {
        case Qt::DisplayRole:
            return text(entry, index.column());
        case Qt::DecorationRole:
            return index.column() == IconColumn ? QVariant(entry.icon()) : QVariant();
        case Qt::ToolTipRole:
            return PlainText::toolTip(PlainText::singleLine(entry.bundlePath()));
        default:
            return {};
    }
}
