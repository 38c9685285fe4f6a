// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "ui/applications/SortableTableView.h"

class ApplicationsTableModel;
class ColumnFitter;
class QMenu;

/** The applications table as it looks: its columns, its header and the menu that does what the header does. Main thread. */
class ApplicationsTableView : public SortableTableView {
    Q_OBJECT

  public:
    explicit ApplicationsTableView(QWidget* parent = nullptr) : SortableTableView(parent) {}

    /** The model outlives the view. To be called once. */
    void setApplications(ApplicationsTableModel& model);

    /** Fills `menu` with the orders, for the keyboard and for screen readers: each item is a click on a header. */
    void setSortMenu(QMenu& menu);

    void showSorting(int column, std::int32_t direction) override;

    ColumnFitter& columnFitter() const { return *m_ColumnFitter; }

  private:
    void setupColumns();

    QMenu* m_SortMenu = nullptr;
    ColumnFitter* m_ColumnFitter = nullptr;
};
