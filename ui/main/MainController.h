// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>
#include <QTimer>
#include <cstdint>
#include <memory>

#include "daemon/ApplicationsIterator.h"
#include "daemon/DaemonConnectionDelegate.h"
#include "ui/main/ApplicationsTableModel.h"
#include "ui/main/GrowlBridgeDelegate.h"
#include "ui/main/ProgramInformation.h"

class DrawerController;
class MainWindow;
class QAction;
class QMenu;
class StatusIcon;
class TotalStatisticController;
class WindowMemory;

namespace Ui {
class MainWindow;
}

/**
 * Owns the main window and the item in the desktop's tray: fills the applications table every five seconds, sorts it
 * as the user clicks, and answers the commands of both, which open the charts. Lives on the main thread, from the start
 * of the shared connection to the end of the event loop.
 */
class MainController : public QObject, public DaemonConnectionDelegate, public GrowlBridgeDelegate {
  public:
    /** Makes the cursor behind the table, opens the window and fills it. */
    MainController();

    /** Closes the windows and deletes the cursor in the daemon. */
    ~MainController() override;

    MainController(const MainController&) = delete;
    MainController& operator=(const MainController&) = delete;

    /** Null without a selection, for the totals row and for a row that cannot be fetched. */
    std::shared_ptr<const ApplicationInfo> selectedApplication();

    /** Fetches the totals, the number of applications and the visible rows; the main thread waits for them. */
    void updateAllInformation();

    void showMainWindow();

    /** The user asked for the program that runs already: the window comes to the front. */
    void applicationShouldHandleReopen() { showMainWindow(); }

    /** Tells the desktop; the table learns of it with its next refresh. */
    void newApplicationAdded(const std::shared_ptr<const ApplicationInfo>& application) override;

    /** The window comes to the front, up to date; the selection stays where it is. */
    void notificationWasClicked(const QVariant& clickContext) override;

    /** Closes the charts, whose counters are about to go, and returns when the history is clean. */
    void daemonStartCleanDataBase() override;

    void daemonEndCleanDataBase() override;

    /** What the daemon calls the column to sort by: 0 name, 1 path, 2 last activity, 3 received, 4 sent, 5
     * none. */
    static std::int32_t sortFieldFromColumnId(int columnId);

  private:
    void awakeFromNib();
    void setupTable();
    void setupDrawer();
    void setupCommands();
    void createStatusIcon();

    void askWhetherDaemonCleans();
    void endCleaning();

    void updateInformationTimer();
    void fetchVisibleRows();
    int selectedRow() const;
    void tableViewSelectionDidChange();
    void updateApplicationButtons();
    bool validateMenuItem(const QAction* item);

    void didClickTableColumn(int columnId);

    void drawerWillOpen();
    void drawerWillClose();

    void tableDoubleClicked();
    void showApplicationProperties();
    void showApplicationTCPTraffic();
    void showApplicationUDPTraffic();
    void showApplicationFullTraffic();
    void menuNeedsUpdate();
    void showRealtimeGraphic(std::int32_t applicationId);
    void showSelectedRealtimeGraphic();
    void showPreferences();
    void showHelp();
    void showHomePage();
    void showAbout();
    void windowWillClose();
    void quitFromApplication();

    std::shared_ptr<ApplicationsIterator> m_ApplicationsList;
    std::int32_t m_ApplicationsSortField;
    std::int32_t m_ApplicationsSortDirection;
    ApplicationsTableModel m_ApplicationsTableModel;
    const std::unique_ptr<MainWindow> m_Window;
    Ui::MainWindow& m_Outlets;  ///< of m_Window
    ProgramInformation m_ProgramInformation;
    std::unique_ptr<DrawerController> m_DrawerController;
    std::unique_ptr<TotalStatisticController> m_TotalStatisticController;
    std::unique_ptr<WindowMemory> m_WindowMemory;
    std::unique_ptr<StatusIcon> m_StatusIcon;
    QMenu* m_RealtimeGraphicsMenu = nullptr;  ///< in m_StatusIcon
    QTimer m_UpdateInformationTimer;
};
