// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/main/MainWindow.h"

#include <QMenu>
#include <QScrollArea>
#include <QShortcut>

#include "ui_MainWindow.h"

namespace {

constexpr int drawerWidth = 296;                                  // pixels, with room for a scroll bar
constexpr auto defaultPreferencesKey = Qt::CTRL | Qt::Key_Comma;  // for desktops without one of their own

}  // namespace

MainWindow::MainWindow() : m_Outlets(std::make_unique<Ui::MainWindow>()) {
    m_Outlets->setupUi(this);
    setupKeys();
    setupToolTips();
    setupButtons();
    setupMenus();
    setupDrawer();
}

MainWindow::~MainWindow() = default;

void MainWindow::setupKeys() {
    const auto preferencesKeys = QKeySequence::keyBindings(QKeySequence::Preferences);
    m_Outlets->m_PreferencesAction->setShortcuts(
        preferencesKeys.isEmpty() ? QList<QKeySequence>{defaultPreferencesKey} : preferencesKeys);
    m_Outlets->m_FullTrafficAction->setShortcuts({Qt::Key_Return, Qt::Key_Enter});
    m_Outlets->m_FullTrafficAction->setShortcutContext(
        Qt::WidgetShortcut);  // of the table: buttons have a use for it
    m_Outlets->m_ApplicationsTable->addAction(m_Outlets->m_FullTrafficAction);
}

void MainWindow::setupToolTips() {
    for (QAction* action :
         {m_Outlets->m_PropertiesAction, m_Outlets->m_TCPTrafficAction, m_Outlets->m_UDPTrafficAction,
          m_Outlets->m_FullTrafficAction, m_Outlets->m_LiveChartAction, m_Outlets->m_PreferencesAction,
          m_Outlets->m_AdditionalInfoAction}) {
        action->setToolTip(action->toolTip() + " (" + action->shortcut().toString(QKeySequence::NativeText) +
                           ")");
    }
    m_Outlets->m_AdditionalInfoBtn->setToolTip(m_Outlets->m_AdditionalInfoAction->toolTip());
    m_Outlets->m_AdditionalInfoToggleBtn->setToolTip(m_Outlets->m_AdditionalInfoAction->toolTip());
}

void MainWindow::setupButtons() {
    m_Outlets->m_ShowApplicationPropertiesButton->setDefaultAction(m_Outlets->m_PropertiesAction);
    m_Outlets->m_ShowApplicationTCPTrafficButton->setDefaultAction(m_Outlets->m_TCPTrafficAction);
    m_Outlets->m_ShowApplicationUDPTrafficButton->setDefaultAction(m_Outlets->m_UDPTrafficAction);
    m_Outlets->m_ShowApplicationFullTrafficButton->setDefaultAction(m_Outlets->m_FullTrafficAction);
    m_Outlets->m_ShowApplicationLiveChartButton->setDefaultAction(m_Outlets->m_LiveChartAction);
    m_Outlets->m_PreferencesButton->setDefaultAction(m_Outlets->m_PreferencesAction);
    connect(m_Outlets->m_CloseAction, &QAction::triggered, this, &QWidget::close);
    connect(m_Outlets->m_MinimizeAction, &QAction::triggered, this,
            [this] { setWindowState(windowState() | Qt::WindowMinimized); });  // maximized again afterwards
}

void MainWindow::setupMenus() {
    TableView* table = m_Outlets->m_ApplicationsTable;
    m_Outlets->m_EditMenu->addAction(table->copyAction());
    m_TableMenu = new QMenu(table);
    m_TableMenu->addActions(m_Outlets->m_ApplicationMenu->actions());
    m_TableMenu->addAction(m_Outlets->m_AdditionalInfoAction);
    m_TableMenu->addSeparator();
    m_TableMenu->addAction(table->copyAction());
    table->setMenu(m_TableMenu);
}

bool MainWindow::isTableMenuOpen() const {
    return m_TableMenu->isVisible();
}

void MainWindow::setupDrawer() {
    m_Details = new QWidget;
    auto* scroller = new QScrollArea;  // for windows lower than the details
    scroller->setWidget(m_Details);
    scroller->setWidgetResizable(true);
    scroller->setFrameShape(QFrame::NoFrame);
    scroller->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    scroller->setFixedWidth(drawerWidth);
    Drawer* drawer = m_Outlets->m_Drawer;
    drawer->setContentView(scroller);
    connect(m_Outlets->m_AdditionalInfoBtn, &QPushButton::clicked, drawer, &Drawer::toggle);
    connect(m_Outlets->m_AdditionalInfoToggleBtn, &DisclosureButton::clicked, drawer, &Drawer::toggle);
    connect(m_Outlets->m_AdditionalInfoAction, &QAction::triggered, drawer, &Drawer::toggle);
    auto* space = new QShortcut(Qt::Key_Space, m_Outlets->m_ApplicationsTable);
    space->setContext(Qt::WidgetShortcut);
    connect(space, &QShortcut::activated, drawer, &Drawer::toggle);
}

void MainWindow::closeEvent(QCloseEvent* event) {
    emit aboutToClose();
    QMainWindow::closeEvent(event);
}
