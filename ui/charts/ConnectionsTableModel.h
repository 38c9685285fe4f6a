// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QAbstractTableModel>
#include <QHash>
#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

#include "daemon/ConnectionInfo.h"

/**
 * What the connections table shows: a row for each connection of a cursor.
 *
 * It asks for a row in `fetchRows` and `connectionForRow` only, once a refresh; what was never fetched, or could not
 * be, has a number and no more, and takes no memory. It is never reset: rows come and go at the end, everything else
 * changes in place, so that a view keeps its selection and its place. Main thread.
 */
class ConnectionsTableModel : public QAbstractTableModel {
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

    /** Fetches `count` connections from index `first` on; null where there is none. */
    using Fetch = std::function<std::vector<std::shared_ptr<const ConnectionInfo>>(std::int32_t first,
                                                                                   std::int32_t count)>;

    /** What a date's cell says where its text has no room. */
    static constexpr int ShortTextRole = Qt::UserRole;

    explicit ConnectionsTableModel(Fetch fetch, QObject* parent = nullptr);

    /** The daemon's code of the order by a column; 7, its natural order, for the row numbers and for no column. */
    static std::int32_t sortFieldFromColumnId(int column);

    /** Begins anew with so many rows, none of them asked for; what was fetched before is shown until it is. */
    void refresh(std::int32_t connections);

    /** Rows stand for other connections from now on: forgets what was fetched. A refresh follows. */
    void orderChanged();

    /** Fetches those of the rows `first` to `last`, inclusive, that were not asked for since the last refresh. */
    void fetchRows(int first, int last);

    /** The connection in `row`, fetched if need be; null where there is none. */
    std::shared_ptr<const ConnectionInfo> connectionForRow(int row);

    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;

    /** Every cell's tooltip tells of the whole connection. */
    QVariant data(const QModelIndex& index, int role) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

  private:
    struct Row {
        std::shared_ptr<const ConnectionInfo> connection;  ///< null when it could not be fetched
        unsigned refresh = 0;                              ///< during which it was asked for
    };

    void setRowCount(int rows);
    bool isFresh(int row) const;
    void fetchRun(int first, int count);

    Fetch m_Fetch;
    int m_RowCount = 0;
    unsigned m_Refresh = 1;
    QHash<int, Row> m_Rows;  ///< those that were asked for since the order changed
};
