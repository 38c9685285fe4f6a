// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>
#include <QTimer>
#include <cstdint>
#include <memory>

#include "daemon/ApplicationsIterator.h"
#include "daemon/DaemonConnectionDelegate.h"
#include "ui/main/ApplicationsTableModel.h"
#include "ui/main/TotalStatisticController.h"

class QMainWindow;
class TableView;

/**
 * Owns the main window: fills the applications table every five seconds and sorts it as the user clicks.
 * Lives on the main thread, from the start of the shared connection to the end of the event loop.
 */
class MainController : public QObject, public DaemonConnectionDelegate {
  public:
    /** Makes the cursor behind the table, opens the window and fills it. */
    MainController();

    /** Closes the window and deletes the cursor in the daemon. */
    ~MainController() override;

    MainController(const MainController&) = delete;
    MainController& operator=(const MainController&) = delete;

    /** Null without a selection, for the totals row and for a row that cannot be fetched. */
    std::shared_ptr<const ApplicationInfo> selectedApplication();

    /** Fetches the totals, the number of applications and the visible rows; the main thread waits for them.
     */
    void updateAllInformation();

    /** What the daemon calls the column to sort by: 0 name, 1 path, 2 last activity, 3 received, 4 sent, 5
     * none. */
    static std::int32_t sortFieldFromColumnId(int columnId);

  private:
    void setupTable();
    void fitColumns(int width);
    void updateInformationTimer();
    void fetchVisibleRows();
    void didClickTableColumn(int columnId);
    void showSortIndicator(int columnId);

    std::shared_ptr<ApplicationsIterator> m_ApplicationsList;
    std::int32_t m_ApplicationsSortField;
    std::int32_t m_ApplicationsSortDirection;
    TotalStatisticController m_TotalStatisticController;
    ApplicationsTableModel m_ApplicationsTableModel;
    std::unique_ptr<QMainWindow> m_Window;
    TableView* m_ApplicationsTable = nullptr;  ///< the window's
    QTimer m_UpdateInformationTimer;
};
