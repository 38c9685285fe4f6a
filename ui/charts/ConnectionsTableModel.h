// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "daemon/ConnectionInfo.h"
#include "ui/applications/FetchedTableModel.h"

/** What the connections table shows: a row for each connection of a cursor; one that is not known has a number only. */
class ConnectionsTableModel : public FetchedTableModel<ConnectionInfo> {
  public:
    /** The numbers are the columns' identifiers. */
    enum Column {
        NumberColumn = 0,
        StartColumn = 1,
        EndColumn = 2,
        DirectionColumn = 3,
        ReceivedColumn = 4,
        SentColumn = 5,
        LocalAddressColumn = 6,
        RemoteAddressColumn = 7,
        ColumnCount
    };

    /** What a date's cell says where its text has no room. */
    static constexpr int ShortTextRole = Qt::UserRole;

    explicit ConnectionsTableModel(Fetch fetch, QObject* parent = nullptr);

    /** The daemon's code of the order by a column; 7, its natural order, for the row numbers and for no column. */
    static std::int32_t sortFieldFromColumnId(int column);

    /** Begins anew with so many rows. */
    void refresh(std::int32_t connections) { refreshRows(connections); }

    /** The connection in `row`, fetched if need be; null where there is none. */
    std::shared_ptr<const ConnectionInfo> connectionForRow(int row) { return recordForRow(row); }

    /** Every cell's tooltip tells of the whole connection. */
    QVariant data(const QModelIndex& index, int role) const override;
};
