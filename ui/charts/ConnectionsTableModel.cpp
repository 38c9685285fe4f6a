// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/charts/ConnectionsTableModel.h"

#include <utility>

#include "ui/charts/ConnectionText.h"
#include "ui/charts/TrafficFormat.h"

namespace {

using Model = ConnectionsTableModel;

QString headerText(int column) {
    switch (column) {
        case Model::NumberColumn:
            return "#";
        case Model::StartColumn:
            return "Start";
        case Model::EndColumn:
            return "End";
        case Model::DirectionColumn:
            return "Direction";
        case Model::ReceivedColumn:
            return "Received, MB";
        case Model::SentColumn:
            return "Sent, MB";
        case Model::LocalAddressColumn:
            return "Local address";
        case Model::RemoteAddressColumn:
            return "Remote address";
        default:
            return {};
    }
}

QString cellText(const ConnectionInfo& connection, int column) {
    switch (column) {
        case Model::StartColumn:
            return NSDateToNSString(connection.startTime());
        case Model::EndColumn:
            return NSDateToNSString(connection.endTime());
        case Model::DirectionColumn:
            return connection.direction();
        case Model::ReceivedColumn:
            return bytesToNSString(connection.receivedBytes());
        case Model::SentColumn:
            return bytesToNSString(connection.sendedBytes());
        case Model::LocalAddressColumn:
            return connection.localAddress();
        case Model::RemoteAddressColumn:
            return connection.remoteAddress();
        default:
            return {};
    }
}

int alignment(int column) {
    const bool isNumber =
        column == Model::NumberColumn || column == Model::ReceivedColumn || column == Model::SentColumn;
    return (isNumber ? Qt::AlignRight : Qt::AlignLeft) | Qt::AlignVCenter;
}

QVariant shortText(const ConnectionInfo& connection, int column) {
    switch (column) {
        case Model::StartColumn:
            return shortDateText(connection.startTime());
        case Model::EndColumn:
            return shortDateText(connection.endTime());
        default:
            return {};
    }
}

}  // namespace

ConnectionsTableModel::ConnectionsTableModel(Fetch fetch, QObject* parent)
    : FetchedTableModel(std::move(fetch), 0, parent) {}

std::int32_t ConnectionsTableModel::sortFieldFromColumnId(int column) {
    constexpr std::int32_t naturalOrder = 7;
    return column >= StartColumn && column <= RemoteAddressColumn ? column - StartColumn : naturalOrder;
}

int ConnectionsTableModel::columnCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : ColumnCount;
}

QVariant ConnectionsTableModel::data(const QModelIndex& index, int role) const {
    const int row = index.row();
    if (role == Qt::TextAlignmentRole) {
        return alignment(index.column());
    }
    if (role == Qt::DisplayRole && index.column() == NumberColumn) {
        return QString::number(row + 1);
    }
    if (role != Qt::DisplayRole && role != Qt::ToolTipRole && role != ShortTextRole) {
        return {};
    }
    const auto connection = knownRecord(row);
    if (connection == nullptr) {
        return {};
    }
    if (role == ShortTextRole) {
        return shortText(*connection, index.column());
    }
    return role == Qt::DisplayRole ? cellText(*connection, index.column()) : connectionText(*connection);
}

QVariant ConnectionsTableModel::headerData(int section, Qt::Orientation orientation, int role) const {
    if (orientation != Qt::Horizontal) {
        return {};
    }
    switch (role) {
        case Qt::DisplayRole:
            return headerText(section);
        case Qt::TextAlignmentRole:
            return alignment(section);
        default:
            return {};
    }
}
