// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QAbstractTableModel>
#include <QDateTime>
#include <QHash>
#include <QSet>
#include <functional>
#include <memory>
#include <vector>

#include "daemon/ApplicationInfo.h"
#include "daemon/TotalStatisticInfo.h"

/**
 * What the applications table shows: a row with the sums over all applications, then a row for each of them.
 *
 * It asks for a row in `fetchRows` and `applicationForRow` only, once a refresh. What it knows of the others is from
 * an earlier refresh, which is good enough to find a name; cells are empty that were never fetched or could not be.
 * It is never reset: rows come and go at the end, everything else changes in place, so that a
 * view keeps its selection and its place. Main thread.
 */
class ApplicationsTableModel : public QAbstractTableModel {
  public:
    /** The numbers are the columns' identifiers. */
    enum Column {
        NumberColumn = 0,
        IconColumn = 1,
        NameColumn = 2,
        PathColumn = 3,
        ReceivedColumn = 4,
        SentColumn = 5,
        LastActivityColumn = 6,
        ColumnCount
    };

    /** A cell's part of the sums over all applications, 0 to 1; only in the columns of bytes. */
    static constexpr int ShareRole = Qt::UserRole;

    static constexpr int TotalsRow = 0;

    /** Fetches `count` applications from index `first` on; null where there is none. */
    using Fetch = std::function<std::vector<std::shared_ptr<const ApplicationInfo>>(std::int32_t first,
                                                                                    std::int32_t count)>;

    explicit ApplicationsTableModel(Fetch fetch, QObject* parent = nullptr);

    /**
     * Begins anew with `applications` rows beside the totals row, none of them fetched; -1 leaves no row at
     * all. Without `totals` all sums are zero.
     */
    void refresh(std::int32_t applications, std::shared_ptr<const TotalStatisticInfo> totals);

    /** Rows stand for other applications from now on. */
    void orderChanged();

    /** Fetches those of the rows `first` to `last`, inclusive, that were not asked for since the last
     * refresh. */
    void fetchRows(int first, int last);

    /** The application in `row`, fetched if need be; null for the totals row and for a row that cannot be
     * fetched. */
    std::shared_ptr<const ApplicationInfo> applicationForRow(int row);

    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

  private:
    void setRowCount(int rows);
    void fetchRun(int first, int count);
    QVariant fieldValue(int row, int column) const;
    QVariant totalStatisticFieldValue(int column) const;
    static QVariant applicationFieldValue(int row, const ApplicationInfo& application, int column);
    QVariant share(const ApplicationInfo& application, int column) const;

    Fetch m_Fetch;
    int m_RowCount = 0;
    std::shared_ptr<const TotalStatisticInfo> m_Totals;  ///< never null
    QDateTime m_TotalsEnd;                               ///< of m_Totals, at the refresh
    QHash<int, std::shared_ptr<const ApplicationInfo>>
        m_Applications;     ///< by row; null where fetching failed
    QSet<int> m_FreshRows;  ///< asked for since the last refresh
};
