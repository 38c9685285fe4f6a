// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/main/MainController.h"

#include <QCoreApplication>
#include <QEvent>
#include <QItemSelectionModel>
#include <QMenu>
#include <QSystemTrayIcon>
#include <chrono>

#include "controls/ProgressDlg.h"
#include "daemon/DaemonConnection.h"
#include "platform/FileInformation.h"
#include "platform/WindowFront.h"
#include "ui/applications/ApplicationsMenu.h"
#include "ui/applications/SortDirection.h"
#include "ui/charts/ConnectionsGraphicController.h"
#include "ui/charts/RealtimeGraphic.h"
#include "ui/main/DrawerController.h"
#include "ui/main/GrowlBridge.h"
#include "ui/main/MainWindow.h"
#include "ui/main/StatusIcon.h"
#include "ui/main/TotalStatisticController.h"
#include "ui/main/WindowMemory.h"
#include "ui/preferences/PreferencesController.h"
#include "ui_MainWindow.h"

namespace {

using namespace std::chrono_literals;
using Model = ApplicationsTableModel;

constexpr auto updateInterval = 5s;
constexpr std::int32_t tcp = 6;
constexpr std::int32_t udp = 17;

/** On the wire: never renumber. */
enum SortField : std::int32_t {
    SortByName = 0,
    SortByPath = 1,
    SortByLastActivity = 2,
    SortByReceived = 3,
    SortBySent = 4,
    SortByNothing = 5
};

}  // namespace

MainController::MainController()
    : m_ApplicationsList(ApplicationsIterator::iterator()),
      m_ApplicationsSortField(SortByNothing),
      m_ApplicationsSortDirection(Unsorted),
      m_ApplicationsTableModel(
          [this](auto first, auto count) { return m_ApplicationsList->prefetch(first, count); }),
      m_Window(std::make_unique<MainWindow>()),
      m_Outlets(m_Window->outlets()),
      m_ProgramInformation(*m_Window) {
    DaemonConnection::sharedConnection()->setDelegate(this);
    GrowlBridge::sharedBridge()->setDelegate(this);
    m_TotalStatisticController = std::make_unique<TotalStatisticController>(*m_Outlets.m_TotalsPanel);
    awakeFromNib();
    // Not before the event loop runs: nothing could end a dialog here.
    QMetaObject::invokeMethod(this, &MainController::askWhetherDaemonCleans, Qt::QueuedConnection);
}

MainController::~MainController() {
    PreferencesController::releaseSharedController();
    DaemonConnection::sharedConnection()->setDelegate(nullptr);
    GrowlBridge::sharedBridge()->setDelegate(nullptr);
    ConnectionsGraphicController::closeAllGraphics();
    RealtimeGraphic::closeAllGraphics();
    QCoreApplication::sendPostedEvents(nullptr,
                                       QEvent::DeferredDelete);  // no event loop will delete their windows
    if (m_Window->isVisible()) {
        m_WindowMemory->save();
    }
}

void MainController::awakeFromNib() {
    setupTable();
    setupDrawer();
    setupCommands();
    createStatusIcon();
    m_WindowMemory = std::make_unique<WindowMemory>(*m_Window, m_Outlets.m_ApplicationsTable->columnFitter(),
                                                    *m_Outlets.m_Drawer);
    m_WindowMemory->restore();
    connect(m_Window.get(), &MainWindow::aboutToClose, this, &MainController::windowWillClose);
    m_Window->show();  // the table's size decides how many rows are fetched
    connect(&m_UpdateInformationTimer, &QTimer::timeout, this, &MainController::updateInformationTimer);
    m_UpdateInformationTimer.setTimerType(Qt::PreciseTimer);
    m_UpdateInformationTimer.start(updateInterval);
    updateInformationTimer();
}

void MainController::setupTable() {
    ApplicationsTableView* table = m_Outlets.m_ApplicationsTable;
    table->setApplications(m_ApplicationsTableModel);
    table->setSortMenu(*m_Outlets.m_SortMenu);
    table->setFocus();
    connect(table, &TableView::visibleRowsChanged, this, &MainController::fetchVisibleRows);
    connect(table, &TableView::doubleClicked, this, &MainController::tableDoubleClicked);
    connect(table->selectionModel(), &QItemSelectionModel::selectionChanged, this,
            &MainController::tableViewSelectionDidChange);
    connect(table, &ApplicationsTableView::columnClicked, this, &MainController::didClickTableColumn);
}

void MainController::setupDrawer() {
    m_DrawerController = std::make_unique<DrawerController>(m_Window->details());
    connect(m_Outlets.m_Drawer, &Drawer::willOpen, this, &MainController::drawerWillOpen);
    connect(m_Outlets.m_Drawer, &Drawer::willClose, this, &MainController::drawerWillClose);
}

void MainController::setupCommands() {
    const auto answer = [this](const QAction* command, void (MainController::*method)()) {
        connect(command, &QAction::triggered, this, method);
    };
    answer(m_Outlets.m_PropertiesAction, &MainController::showApplicationProperties);
    answer(m_Outlets.m_TCPTrafficAction, &MainController::showApplicationTCPTraffic);
    answer(m_Outlets.m_UDPTrafficAction, &MainController::showApplicationUDPTraffic);
    answer(m_Outlets.m_FullTrafficAction, &MainController::showApplicationFullTraffic);
    answer(m_Outlets.m_LiveChartAction, &MainController::showSelectedRealtimeGraphic);
    answer(m_Outlets.m_PreferencesAction, &MainController::showPreferences);
    answer(m_Outlets.m_QuitAction, &MainController::quitFromApplication);
    answer(m_Outlets.m_HelpAction, &MainController::showHelp);
    answer(m_Outlets.m_HomePageAction, &MainController::showHomePage);
    answer(m_Outlets.m_AboutAction, &MainController::showAbout);
}

void MainController::createStatusIcon() {
    m_StatusIcon = std::make_unique<StatusIcon>(m_Outlets);
    m_RealtimeGraphicsMenu = m_StatusIcon->realtimeGraphicsMenu();
    const StatusIcon* icon = m_StatusIcon.get();
    connect(icon, &StatusIcon::showWanted, this, &MainController::showMainWindow);
    connect(icon, &StatusIcon::menuNeedsUpdate, this, &MainController::menuNeedsUpdate);
    connect(icon, &StatusIcon::realtimeGraphicWanted, this, &MainController::showRealtimeGraphic);
    connect(icon, &StatusIcon::preferencesWanted, this, [this] {
        showMainWindow();  // which the sheet stands on
        showPreferences();
    });
}

/** Not while a menu is open that speaks of a row: another application might come to stand in it. */
void MainController::updateInformationTimer() {
    if (!m_Window->isTableMenuOpen()) {
        updateAllInformation();
    }
}

void MainController::updateAllInformation() {
    m_TotalStatisticController->updateTotalStatistic();
    const auto totals = m_TotalStatisticController->totalStatisticInfo();
    const std::int32_t applications = m_ApplicationsList->countApplications();
    m_ApplicationsTableModel.refresh(applications, totals);
    fetchVisibleRows();
    const bool isNothingKnown = applications == 0 && totals != nullptr;  // a lost daemon has no totals either
    m_Outlets.m_ApplicationsTable->setEmptyText(isNothingKnown ? "No application has used the network yet."
                                                               : "");
    tableViewSelectionDidChange();
    if (totals == nullptr) {
        endCleaning();  // the daemon is lost: nobody will say when it is over
    }
}

void MainController::fetchVisibleRows() {
    const auto [first, last] = m_Outlets.m_ApplicationsTable->visibleRows();
    m_ApplicationsTableModel.fetchRows(first, last);
}

int MainController::selectedRow() const {
    const QModelIndexList rows = m_Outlets.m_ApplicationsTable->selectionModel()->selectedRows();
    return rows.isEmpty() ? -1 : rows.first().row();
}

std::shared_ptr<const ApplicationInfo> MainController::selectedApplication() {
    return m_ApplicationsTableModel.applicationForRow(selectedRow());
}

void MainController::tableViewSelectionDidChange() {
    m_DrawerController->updateFromApplicationInfo(selectedApplication());
    updateApplicationButtons();
}

/** Always up to date, and not only when the menu opens: the buttons and the shortcuts are the same actions. */
void MainController::updateApplicationButtons() {
    for (QAction* item : m_Outlets.m_ApplicationMenu->actions()) {
        item->setEnabled(validateMenuItem(item));
    }
    m_Outlets.m_LiveChartAction->setEnabled(m_Outlets.m_PropertiesAction->isEnabled());
}

/** The totals row is a row, but no application: it has traffic, but neither properties nor a live chart. */
bool MainController::validateMenuItem(const QAction* item) {
    return item == m_Outlets.m_PropertiesAction ? selectedApplication() != nullptr : selectedRow() >= 0;
}

std::int32_t MainController::sortFieldFromColumnId(int columnId) {
    switch (columnId) {
        case Model::NameColumn:
            return SortByName;
        case Model::PathColumn:
            return SortByPath;
        case Model::ReceivedColumn:
            return SortByReceived;
        case Model::SentColumn:
            return SortBySent;
        case Model::LastActivityColumn:
            return SortByLastActivity;
        default:
            return SortByNothing;
    }
}

void MainController::didClickTableColumn(int columnId) {
    const std::int32_t field = sortFieldFromColumnId(columnId);
    const bool isSameField = field == m_ApplicationsSortField;
    m_ApplicationsSortDirection = isSameField ? nextDirection(m_ApplicationsSortDirection) : Ascending;
    m_ApplicationsSortField = field;
    if (field == SortByNothing) {
        m_ApplicationsSortDirection = Unsorted;
    }
    m_Outlets.m_ApplicationsTable->showSorting(columnId, m_ApplicationsSortDirection);
    m_ApplicationsList->setSortField(m_ApplicationsSortField, m_ApplicationsSortDirection);
    m_ApplicationsTableModel.orderChanged();
    updateAllInformation();
}

void MainController::drawerWillOpen() {
    m_Outlets.m_AdditionalInfoToggleBtn->setChecked(false);
    m_Outlets.m_AdditionalInfoBtn->setText("Additional Info <<<");
}

void MainController::drawerWillClose() {
    m_Outlets.m_AdditionalInfoToggleBtn->setChecked(true);
    m_Outlets.m_AdditionalInfoBtn->setText("Additional Info >>>");
}

void MainController::tableDoubleClicked() {
    m_Outlets.m_Drawer->toggle();
}

void MainController::showApplicationProperties() {
    if (const auto application = selectedApplication()) {
        FileInformation::showForFile(application->bundlePath());
    }
}

void MainController::showApplicationTCPTraffic() {
    ConnectionsGraphicController::graphic(selectedApplication(), tcp)->show();
}

void MainController::showApplicationUDPTraffic() {
    ConnectionsGraphicController::graphic(selectedApplication(), udp)->show();
}

void MainController::showApplicationFullTraffic() {
    ConnectionsGraphicController::graphic(selectedApplication())->show();
}

void MainController::menuNeedsUpdate() {
    ApplicationsMenu::fill(*m_RealtimeGraphicsMenu);
    for (QAction* item : m_RealtimeGraphicsMenu->actions()) {
        item->setCheckable(true);
        item->setChecked(RealtimeGraphic::isGraphicForAplicationIdExist(item->data().toInt()));
    }
}

void MainController::showRealtimeGraphic(std::int32_t applicationId) {
    auto graphic = RealtimeGraphic::findVisibleGraphicFromApplicationId(applicationId);
    if (graphic == nullptr) {
        graphic = RealtimeGraphic::graphicWithApplicationId(applicationId);
    }
    graphic->show();
}

void MainController::showSelectedRealtimeGraphic() {
    if (const auto application = selectedApplication()) {
        showRealtimeGraphic(application->id());
    }
}

void MainController::newApplicationAdded(const std::shared_ptr<const ApplicationInfo>& application) {
    GrowlBridge::showNewApplicationNotify(application);
}

void MainController::notificationWasClicked(const QVariant& /*clickContext*/) {
    updateAllInformation();
    showMainWindow();
}

/** The daemon tells of the start only those who were there then. */
void MainController::askWhetherDaemonCleans() {
    if (DaemonConnection::sharedConnection()->isDaemonCleanDataBase()) {
        daemonStartCleanDataBase();
    }
}

void MainController::daemonStartCleanDataBase() {
    ConnectionsGraphicController::closeAllGraphics();
    RealtimeGraphic::closeAllGraphics();
    m_StatusIcon->setCommandsEnabled(false);  // the dialog does not keep the user from the tray
    ProgressDlg* progress = ProgressDlg::sharedProgressDlg();
    progress->setTitle("Cleaning database...");
    progress->setText("Please wait some time while Nevtora Meter clean database.");
    progress->setCancelAllowed(false);
    progress->setIndeterminate(true);
    progress->runModal();
}

void MainController::daemonEndCleanDataBase() {
    endCleaning();
    updateAllInformation();
}

void MainController::endCleaning() {
    ProgressDlg::sharedProgressDlg()->end();
    m_StatusIcon->setCommandsEnabled(true);
}

void MainController::showMainWindow() {
    WindowFront::orderFrontRegardless(*m_Window);
}

void MainController::showPreferences() {
    PreferencesController::sharedController()->beginSheetModalForWindow(m_Window.get());
}

void MainController::showHelp() {
    showHomePage();
}

void MainController::showHomePage() {
    m_ProgramInformation.showHomePage();
}

void MainController::showAbout() {
    m_ProgramInformation.showAbout();
}

/** The monitor stays in the tray; without one nobody could bring it back. */
void MainController::windowWillClose() {
    m_WindowMemory->save();
    if (!QSystemTrayIcon::isSystemTrayAvailable()) {
        QCoreApplication::exit();
    }
}

void MainController::quitFromApplication() {
    QCoreApplication::quit();
}
