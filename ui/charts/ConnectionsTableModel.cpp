// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/charts/ConnectionsTableModel.h"

#include <array>
#include <utility>

#include "ui/charts/ConnectionText.h"
#include "ui/charts/TrafficFormat.h"

namespace {

using Model = ConnectionsTableModel;

constexpr std::array<ColumnTableModel::ColumnHeader, Model::ColumnCount> headers{{
    {"#", Qt::AlignRight},
    {"Start"},
    {"End"},
    {"Direction"},
    {"Received, MB", Qt::AlignRight},
    {"Sent, MB", Qt::AlignRight},
    {"Local address"},
    {"Remote address"},
}};

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
    : FetchedTableModel(headers, std::move(fetch), 0, parent) {}

std::int32_t ConnectionsTableModel::sortFieldFromColumnId(int column) {
    constexpr std::int32_t naturalOrder = 7;
    return column >= StartColumn && column <= RemoteAddressColumn ? column - StartColumn : naturalOrder;
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
