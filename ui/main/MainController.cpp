// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/main/MainController.h"

#include <QCoreApplication>
#include <QDesktopServices>
#include <QDir>
#include <QEvent>
#include <QFile>
#include <QHeaderView>
#include <QMainWindow>
#include <QMenu>
#include <QMessageBox>
#include <QScrollArea>
#include <QShortcut>
#include <QSystemTrayIcon>
#include <QUrl>
#include <QtMath>
#include <algorithm>
#include <chrono>

#include "controls/ColumnFitter.h"
#include "controls/ProgressDlg.h"
#include "controls/TabularDigits.h"
#include "daemon/DaemonConnection.h"
#include "platform/FileInformation.h"
#include "platform/GrowlApplicationBridge.h"
#include "platform/WindowFront.h"
#include "ui/applications/ApplicationsMenu.h"
#include "ui/applications/SortDirection.h"
#include "ui/charts/ConnectionsGraphicController.h"
#include "ui/charts/RealtimeGraphic.h"
#include "ui/charts/TrafficFormat.h"
#include "ui/main/ApplicationsTableDelegate.h"
#include "ui/main/DrawerController.h"
#include "ui/main/GrowlBridge.h"
#include "ui/main/TotalStatisticController.h"
#include "ui/main/WindowMemory.h"
#include "ui/preferences/PreferencesController.h"
#include "ui_MainWindow.h"

namespace {

using namespace std::chrono_literals;
using Model = ApplicationsTableModel;

constexpr auto updateInterval = 5s;
constexpr int drawerWidth = 296;  // pixels, with room for a scroll bar
constexpr std::int32_t tcp = 6;
constexpr std::int32_t udp = 17;
constexpr int sortArrowRoom = 16;                                 // pixels in a header
constexpr auto defaultPreferencesKey = Qt::CTRL | Qt::Key_Comma;  // for desktops without one of their own

/** From the folder of the program, in an installed tree as in that of a build. */
const QString homePage = QStringLiteral("../share/nevtora-meter/site/index.html");

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
      m_Outlets(std::make_unique<Ui::MainWindow>()),
      m_Window(std::make_unique<QMainWindow>()) {
    DaemonConnection::sharedConnection()->setDelegate(this);
    GrowlBridge::sharedBridge()->setDelegate(this);
    m_Outlets->setupUi(m_Window.get());
    m_TotalStatisticController = std::make_unique<TotalStatisticController>(*m_Outlets->m_TotalsPanel);
    awakeFromNib();
    // Not before the event loop runs: nothing could end a dialog here.
    QMetaObject::invokeMethod(this, &MainController::askWhetherDaemonCleans, Qt::QueuedConnection);
}

MainController::~MainController() {
    PreferencesController::releaseSharedController();
    DaemonConnection::sharedConnection()->setDelegate(nullptr);
    GrowlBridge::sharedBridge()->setDelegate(nullptr);
    GrowlApplicationBridge::setStatusItem(nullptr);
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
    setupColumns();
    setupDrawer();
    setupCommands();
    setupHistoryCommands();
    setupTableMenu();
    setupSortMenu();
    createStatusIcon();
    m_WindowMemory = std::make_unique<WindowMemory>(*m_Window, *m_ColumnFitter, *m_Outlets->m_Drawer);
    m_WindowMemory->restore();
    m_Window->installEventFilter(this);
    m_Window->show();  // the table's size decides how many rows are fetched
    connect(&m_UpdateInformationTimer, &QTimer::timeout, this, &MainController::updateInformationTimer);
    m_UpdateInformationTimer.setTimerType(Qt::PreciseTimer);
    m_UpdateInformationTimer.start(updateInterval);
    updateInformationTimer();
}

void MainController::setupTable() {
    TableView* table = m_Outlets->m_ApplicationsTable;
    table->setModel(&m_ApplicationsTableModel);
    table->setItemDelegate(new ApplicationsTableDelegate(table->font(), table));
    table->setSearchColumn(Model::NameColumn);
    table->setFocus();
    connect(table, &TableView::visibleRowsChanged, this, &MainController::fetchVisibleRows);
    connect(table, &TableView::doubleClicked, this, &MainController::tableDoubleClicked);
    connect(table->selectionModel(), &QItemSelectionModel::selectionChanged, this,
            &MainController::tableViewSelectionDidChange);

    QHeaderView* header = table->horizontalHeader();
    header->setSectionsClickable(true);
    header->setSortIndicatorShown(true);
    header->setSortIndicator(-1, Qt::AscendingOrder);
    connect(header, &QHeaderView::sectionClicked, this, &MainController::didClickTableColumn);
    connect(header, &QHeaderView::sectionDoubleClicked, this, &MainController::didClickTableColumn);
}

/** Numbers get the room that they need; names, paths and dates share the rest. */
void MainController::setupColumns() {
    TableView* table = m_Outlets->m_ApplicationsTable;
    constexpr int margins = 2 * ApplicationsTableDelegate::margin;
    const TabularDigits digits(table->font());
    const int numberWidth = qCeil(digits.width("00000")) + margins;
    const int iconWidth = table->iconSize().width() + margins;
    const QFontMetrics caption = table->horizontalHeader()->fontMetrics();
    const int bytesWidth = std::max(qCeil(digits.width("0000000.000")),
                                    caption.horizontalAdvance("Received, MB") + sortArrowRoom) +
                           margins;
    const QString longDate = NSDateToNSString(QDateTime(QDate(2028, 9, 27), QTime(22, 58, 58)));
    const int dateWidth = table->fontMetrics().horizontalAdvance(longDate) + margins;
    m_ColumnFitter = new ColumnFitter(table, {{numberWidth, numberWidth, 0},
                                              {iconWidth, iconWidth, 0},
                                              {104, 224, 3},
                                              {104, ColumnFitter::unlimitedWidth, 2},
                                              {bytesWidth, bytesWidth, 0},
                                              {bytesWidth, bytesWidth, 0},
                                              {120, dateWidth, 6}});
}

void MainController::setupDrawer() {
    auto* details = new QWidget;
    m_DrawerController = std::make_unique<DrawerController>(*details);
    auto* scroller = new QScrollArea;  // for windows lower than the details
    scroller->setWidget(details);
    scroller->setWidgetResizable(true);
    scroller->setFrameShape(QFrame::NoFrame);
    scroller->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    scroller->setFixedWidth(drawerWidth);
    Drawer* drawer = m_Outlets->m_Drawer;
    drawer->setContentView(scroller);
    connect(drawer, &Drawer::willOpen, this, &MainController::drawerWillOpen);
    connect(drawer, &Drawer::willClose, this, &MainController::drawerWillClose);
    connect(m_Outlets->m_AdditionalInfoBtn, &QPushButton::clicked, drawer, &Drawer::toggle);
    connect(m_Outlets->m_AdditionalInfoToggleBtn, &DisclosureButton::clicked, drawer, &Drawer::toggle);
    connect(m_Outlets->m_AdditionalInfoAction, &QAction::triggered, drawer, &Drawer::toggle);
    auto* space = new QShortcut(Qt::Key_Space, m_Outlets->m_ApplicationsTable);
    space->setContext(Qt::WidgetShortcut);
    connect(space, &QShortcut::activated, drawer, &Drawer::toggle);
}

void MainController::setupCommands() {
    const Ui::MainWindow& outlets = *m_Outlets;
    const auto preferencesKeys = QKeySequence::keyBindings(QKeySequence::Preferences);
    outlets.m_PreferencesAction->setShortcuts(
        preferencesKeys.isEmpty() ? QList<QKeySequence>{defaultPreferencesKey} : preferencesKeys);
    for (QAction* action :
         {outlets.m_PropertiesAction, outlets.m_TCPTrafficAction, outlets.m_UDPTrafficAction,
          outlets.m_FullTrafficAction, outlets.m_LiveChartAction, outlets.m_PreferencesAction,
          outlets.m_AdditionalInfoAction}) {
        action->setToolTip(action->toolTip() + " (" + action->shortcut().toString(QKeySequence::NativeText) +
                           ")");
    }
    outlets.m_ShowApplicationPropertiesButton->setDefaultAction(outlets.m_PropertiesAction);
    outlets.m_ShowApplicationLiveChartButton->setDefaultAction(outlets.m_LiveChartAction);
    outlets.m_PreferencesButton->setDefaultAction(outlets.m_PreferencesAction);
    outlets.m_AdditionalInfoBtn->setToolTip(outlets.m_AdditionalInfoAction->toolTip());
    outlets.m_AdditionalInfoToggleBtn->setToolTip(outlets.m_AdditionalInfoAction->toolTip());
    outlets.m_EditMenu->addAction(outlets.m_ApplicationsTable->copyAction());
    connect(outlets.m_PropertiesAction, &QAction::triggered, this,
            &MainController::showApplicationProperties);
    connect(outlets.m_LiveChartAction, &QAction::triggered, this,
            &MainController::showSelectedRealtimeGraphic);
    connect(outlets.m_PreferencesAction, &QAction::triggered, this, &MainController::showPreferences);
    connect(outlets.m_CloseAction, &QAction::triggered, m_Window.get(), &QWidget::close);
    connect(outlets.m_MinimizeAction, &QAction::triggered, m_Window.get(), [this] {
        m_Window->setWindowState(m_Window->windowState() |
                                 Qt::WindowMinimized);  // maximized again afterwards
    });
    connect(outlets.m_QuitAction, &QAction::triggered, this, &MainController::quitFromApplication);
    connect(outlets.m_HelpAction, &QAction::triggered, this, &MainController::showHelp);
    connect(outlets.m_HomePageAction, &QAction::triggered, this, &MainController::showHomePage);
    connect(outlets.m_AboutAction, &QAction::triggered, this, &MainController::showAbout);
}

void MainController::setupHistoryCommands() {
    const Ui::MainWindow& outlets = *m_Outlets;
    outlets.m_ShowApplicationTCPTrafficButton->setDefaultAction(outlets.m_TCPTrafficAction);
    outlets.m_ShowApplicationUDPTrafficButton->setDefaultAction(outlets.m_UDPTrafficAction);
    outlets.m_ShowApplicationFullTrafficButton->setDefaultAction(outlets.m_FullTrafficAction);
    outlets.m_FullTrafficAction->setShortcuts({Qt::Key_Return, Qt::Key_Enter});
    outlets.m_FullTrafficAction->setShortcutContext(
        Qt::WidgetShortcut);  // of the table: buttons have a use for it
    outlets.m_ApplicationsTable->addAction(outlets.m_FullTrafficAction);
    connect(outlets.m_TCPTrafficAction, &QAction::triggered, this,
            &MainController::showApplicationTCPTraffic);
    connect(outlets.m_UDPTrafficAction, &QAction::triggered, this,
            &MainController::showApplicationUDPTraffic);
    connect(outlets.m_FullTrafficAction, &QAction::triggered, this,
            &MainController::showApplicationFullTraffic);
}

void MainController::setupTableMenu() {
    const Ui::MainWindow& outlets = *m_Outlets;
    m_TableMenu = new QMenu(outlets.m_ApplicationsTable);
    m_TableMenu->addActions(outlets.m_ApplicationMenu->actions());
    m_TableMenu->addAction(outlets.m_AdditionalInfoAction);
    m_TableMenu->addSeparator();
    m_TableMenu->addAction(outlets.m_ApplicationsTable->copyAction());
    outlets.m_ApplicationsTable->setMenu(m_TableMenu);
}

/** The same as clicks on the headers, for the keyboard and for screen readers. */
void MainController::setupSortMenu() {
    for (const int column : {Model::NameColumn, Model::PathColumn, Model::ReceivedColumn, Model::SentColumn,
                             Model::LastActivityColumn, Model::NumberColumn}) {
        const QString title =
            column == Model::NumberColumn
                ? "Unsorted"
                : m_ApplicationsTableModel.headerData(column, Qt::Horizontal, Qt::DisplayRole).toString();
        QAction* item = m_Outlets->m_SortMenu->addAction(title);
        item->setCheckable(true);
        item->setData(column);
        connect(item, &QAction::triggered, this, [this, column] { didClickTableColumn(column); });
    }
    showSortIndicator(Model::NumberColumn);
}

void MainController::createStatusIcon() {
    const Ui::MainWindow& outlets = *m_Outlets;
    m_StatusMenu = std::make_unique<QMenu>();
    QAction* show = m_StatusMenu->addAction(QIcon::fromTheme("window"), "Show Nevtora Meter");
    connect(show, &QAction::triggered, this, &MainController::showMainWindow);
    m_RealtimeGraphicsMenu = m_StatusMenu->addMenu("Applications");
    connect(m_RealtimeGraphicsMenu, &QMenu::triggered, this,
            [this](const QAction* item) { showRealtimeGraphic(item->data().toInt()); });
    // The outer one: not every panel asks for a submenu before it shows it.
    connect(m_StatusMenu.get(), &QMenu::aboutToShow, this, &MainController::menuNeedsUpdate);
    m_StatusMenu->addSeparator();
    m_StatusPreferencesAction =
        m_StatusMenu->addAction(outlets.m_PreferencesAction->icon(), outlets.m_PreferencesAction->text());
    connect(m_StatusPreferencesAction, &QAction::triggered, this, [this] {
        showMainWindow();  // which the sheet stands on
        showPreferences();
    });
    m_StatusMenu->addActions({outlets.m_HelpAction, outlets.m_HomePageAction});
    m_StatusMenu->addSeparator();
    m_StatusMenu->addAction(outlets.m_QuitAction);

    m_StatusIcon = std::make_unique<QSystemTrayIcon>(QIcon(":/app.svg"));
    m_StatusIcon->setToolTip("Nevtora Meter");
    m_StatusIcon->setContextMenu(m_StatusMenu.get());
    connect(m_StatusIcon.get(), &QSystemTrayIcon::activated, this, [this](auto reason) {
        if (reason == QSystemTrayIcon::Trigger) {
            showMainWindow();
        }
    });
    m_StatusIcon->show();
    GrowlApplicationBridge::setStatusItem(m_StatusIcon.get());
}

/** Not while a menu is open that speaks of a row: another application might come to stand in it. */
void MainController::updateInformationTimer() {
    if (!m_TableMenu->isVisible()) {
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
    m_Outlets->m_ApplicationsTable->setEmptyText(isNothingKnown ? "No application has used the network yet."
                                                                : "");
    tableViewSelectionDidChange();
    if (totals == nullptr) {
        endCleaning();  // the daemon is lost: nobody will say when it is over
    }
}

void MainController::fetchVisibleRows() {
    const auto [first, last] = m_Outlets->m_ApplicationsTable->visibleRows();
    m_ApplicationsTableModel.fetchRows(first, last);
}

int MainController::selectedRow() const {
    const QModelIndexList rows = m_Outlets->m_ApplicationsTable->selectionModel()->selectedRows();
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
    for (QAction* item : m_Outlets->m_ApplicationMenu->actions()) {
        item->setEnabled(validateMenuItem(item));
    }
    m_Outlets->m_LiveChartAction->setEnabled(m_Outlets->m_PropertiesAction->isEnabled());
}

/** The totals row is a row, but no application: it has traffic, but neither properties nor a live chart. */
bool MainController::validateMenuItem(const QAction* item) {
    return item == m_Outlets->m_PropertiesAction ? selectedApplication() != nullptr : selectedRow() >= 0;
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
    showSortIndicator(columnId);
    m_ApplicationsList->setSortField(m_ApplicationsSortField, m_ApplicationsSortDirection);
    m_ApplicationsTableModel.orderChanged();
    updateAllInformation();
}

void MainController::showSortIndicator(int columnId) {
    const bool isSorted = m_ApplicationsSortDirection != Unsorted;
    const auto order = m_ApplicationsSortDirection == Descending ? Qt::DescendingOrder : Qt::AscendingOrder;
    m_Outlets->m_ApplicationsTable->horizontalHeader()->setSortIndicator(isSorted ? columnId : -1, order);
    for (QAction* item : m_Outlets->m_SortMenu->actions()) {
        item->setChecked(item->data().toInt() == (isSorted ? columnId : Model::NumberColumn));
    }
}

void MainController::drawerWillOpen() {
    m_Outlets->m_AdditionalInfoToggleBtn->setChecked(false);
    m_Outlets->m_AdditionalInfoBtn->setText("Additional Info <<<");
}

void MainController::drawerWillClose() {
    m_Outlets->m_AdditionalInfoToggleBtn->setChecked(true);
    m_Outlets->m_AdditionalInfoBtn->setText("Additional Info >>>");
}

void MainController::tableDoubleClicked() {
    m_Outlets->m_Drawer->toggle();
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
    setStatusCommandsEnabled(false);
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
    setStatusCommandsEnabled(true);
}

/** Those that open windows: the dialog does not keep the user from the tray. */
void MainController::setStatusCommandsEnabled(bool isEnabled) {
    m_RealtimeGraphicsMenu->setEnabled(isEnabled);
    m_StatusPreferencesAction->setEnabled(isEnabled);
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
    const QString page = QDir::cleanPath(QDir(QCoreApplication::applicationDirPath()).filePath(homePage));
    if (!QFile::exists(page)) {
        showMessage("This page is not installed:", page);
    } else if (!QDesktopServices::openUrl(QUrl::fromLocalFile(page))) {
        showMessage("No program could be started that shows this page:", page);
    }
}

void MainController::showAbout() {
    showMessage("Nevtora Meter " + QCoreApplication::applicationVersion(),
                "Shows which application moves how many bytes.\n\n"
                "Free software under the GNU General Public License, version 3 or later.");
}

/** In the box that is open, if one is: the dialog of a cleaning may stand over it, and would go with it. */
void MainController::showMessage(const QString& text, const QString& details) {
    if (m_Message == nullptr) {
        m_Message =
            new QMessageBox(QMessageBox::NoIcon, "Nevtora Meter", {}, QMessageBox::Ok, m_Window.get());
        m_Message->setAttribute(Qt::WA_DeleteOnClose);
        m_Message->setIconPixmap(QIcon(":/app.svg").pixmap(64, m_Window->devicePixelRatioF()));
        m_Message->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    }
    m_Message->setText(text);
    m_Message->setInformativeText(details);
    m_Message->open();
}

bool MainController::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::Close) {
        windowWillClose();
    }
    return QObject::eventFilter(watched, event);
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
