// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDateTime>
#include <memory>

#include "daemon/ApplicationInfo.h"
#include "daemon/TotalStatisticInfo.h"
#include "ui/applications/FetchedTableModel.h"

/**
 * What the applications table shows: a row with the sums over all applications, then a row for each of them. What it
 * knows from an earlier refresh is good enough to find a name; cells are empty that were never fetched or could not be.
 */
class ApplicationsTableModel : public FetchedTableModel<ApplicationInfo> {
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

    explicit ApplicationsTableModel(Fetch fetch, QObject* parent = nullptr);

    /**
     * Begins anew with `applications` rows beside the totals row, none of them fetched; -1 leaves no row at
     * all. Without `totals` all sums are zero.
     */
    void refresh(std::int32_t applications, std::shared_ptr<const TotalStatisticInfo> totals);

    /** The application in `row`, fetched if need be; null for the totals row and for a row that cannot be fetched. */
    std::shared_ptr<const ApplicationInfo> applicationForRow(int row) { return recordForRow(row); }

    QVariant data(const QModelIndex& index, int role) const override;

  private:
    QVariant fieldValue(int row, int column) const;
    QVariant totalStatisticFieldValue(int column) const;
    static QVariant applicationFieldValue(int row, const ApplicationInfo& application, int column);
    QVariant share(const ApplicationInfo& application, int column) const;

    std::shared_ptr<const TotalStatisticInfo> m_Totals;  ///< never null
    QDateTime m_TotalsEnd;                               ///< of m_Totals, at the refresh
};
