// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QHash>
#include <algorithm>
#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <utility>
#include <vector>

#include "ui/applications/ColumnTableModel.h"

/**
 * A table of the records of a cursor, which are in the daemon and many.
 *
 * It asks for a row in `fetchRows` and `recordForRow` only, once a refresh. What it knows of the others is from an
 * earlier refresh; a row that was never fetched, or could not be, has no record and takes no memory. It is never reset:
 * rows come and go at the end, everything else changes in place, so that a view keeps its selection and its place.
 * Main thread.
 */
template <class Record>
class FetchedTableModel : public ColumnTableModel {
  public:
    /** Fetches `count` records from index `first` on; null where there is none. */
    using Fetch =
        std::function<std::vector<std::shared_ptr<const Record>>(std::int32_t first, std::int32_t count)>;

    /** Rows stand for other records from now on: forgets what was fetched. A refresh follows. */
    void orderChanged() { m_Rows.clear(); }

    /** Fetches those of the rows `first` to `last`, inclusive, that were not asked for since the last refresh. */
    void fetchRows(int first, int last) {
        const int end = std::min(last + 1, m_RowCount);
        for (int row = std::max(first, m_FirstRow); row < end; ++row) {
            const int begin = row;
            while (row < end && !isFresh(row)) {
                ++row;
            }
            if (row > begin) {
                fetchRun(begin, row - begin);
            }
        }
    }

    int rowCount(const QModelIndex& parent = {}) const override { return parent.isValid() ? 0 : m_RowCount; }

  protected:
    /** The cursor's first record is in `firstRow`; the rows before it are the subclass's own. */
    FetchedTableModel(std::span<const ColumnHeader> headers, Fetch fetch, int firstRow, QObject* parent)
        : ColumnTableModel(headers, parent), m_Fetch(std::move(fetch)), m_FirstRow(firstRow) {}

    /** Begins anew with so many rows in all, none of them asked for; what was fetched before is shown until it is. */
    void refreshRows(int rows) {
        ++m_Refresh;
        setRowCount(std::max(rows, 0));
        rowsChanged(0, m_RowCount);
    }

    /** The record in `row` as it was fetched the last time; null where there is none. */
    std::shared_ptr<const Record> knownRecord(int row) const { return m_Rows.value(row).record; }

    /** The record in `row`, fetched if need be; null where there is none. */
    std::shared_ptr<const Record> recordForRow(int row) {
        fetchRows(row, row);
        return knownRecord(row);
    }

  private:
    struct Row {
        std::shared_ptr<const Record> record;  ///< null when it could not be fetched
        unsigned refresh = 0;                  ///< during which it was asked for
    };

    bool isFresh(int row) const {
        const auto known = m_Rows.find(row);
        return known != m_Rows.end() && known->refresh == m_Refresh;
    }

    void fetchRun(int first, int count) {
        int row = first;
        for (auto& record : m_Fetch(first - m_FirstRow, count)) {
            m_Rows.insert(row++, {std::move(record), m_Refresh});
        }
        rowsChanged(first, count);
    }

    void rowsChanged(int first, int count) {
        if (count > 0) {
            emit dataChanged(index(first, 0), index(first + count - 1, columnCount() - 1));
        }
    }

    void setRowCount(int rows) {
        if (rows > m_RowCount) {
            beginInsertRows({}, m_RowCount, rows - 1);
            m_RowCount = rows;
            endInsertRows();
        } else if (rows < m_RowCount) {
            beginRemoveRows({}, rows, m_RowCount - 1);
            m_RowCount = rows;
            m_Rows.removeIf([=](auto known) { return known.key() >= rows; });
            endRemoveRows();
        }
    }

    const Fetch m_Fetch;
    const int m_FirstRow;
    int m_RowCount = 0;
    unsigned m_Refresh = 1;
    QHash<int, Row> m_Rows;  ///< those that were asked for since the order changed
};
