// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "ui/applications/SortableTableView.h"

class ConnectionsTableModel;

/** The connections table as it looks: its columns, its header and the menu of its rows. Main thread. */
class ConnectionsTableView : public SortableTableView {
    Q_OBJECT

  public:
    /** The model outlives the view. */
    explicit ConnectionsTableView(ConnectionsTableModel& model, QWidget* parent = nullptr);

  signals:
    void exportWanted();

  private:
    void setupColumns();
    void setupMenu();
};
