// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "controls/TableView.h"

class ConnectionsTableModel;

/** The connections table as it looks: its columns, its header and the menu of its rows. Main thread. */
class ConnectionsTableView : public TableView {
    Q_OBJECT

  public:
    /** The model outlives the view. */
    explicit ConnectionsTableView(ConnectionsTableModel& model, QWidget* parent = nullptr);

    /** The mark in the header of `column`, -1 for none. */
    void showSorting(int column, Qt::SortOrder order);

  signals:
    void columnClicked(int column);
    void exportWanted();

  private:
    void setupHeader();
    void setupColumns();
    void setupMenu();
};
