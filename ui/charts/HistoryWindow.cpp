// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/charts/HistoryWindow.h"

#include <QScreen>
#include <QShortcut>
#include <QVBoxLayout>
#include <algorithm>
#include <utility>

#include "ui/charts/ConnectionsTableView.h"
#include "ui/charts/HistorySubject.h"
#include "ui_ConnectionsGraphic.h"

namespace {

constexpr int slideTransition = 9;
constexpr int slideOptions = 130;
constexpr float backgroundAlpha = 0.9F;
constexpr int narrowestDrawer = 480;  // pixels
constexpr int widestDrawer = 960;
constexpr int drawerMargin = 12;

void keepRoomWhileHidden(QWidget* widget) {
    QSizePolicy policy = widget->sizePolicy();
    policy.setRetainSizeWhenHidden(true);
    widget->setSizePolicy(policy);
}

}  // namespace

HistoryWindow::HistoryWindow(const HistorySubject& subject, ConnectionsTableView* table)
    : m_Outlets(std::make_unique<Ui::ConnectionsGraphic>()) {
    m_Outlets->setupUi(this);
    setWindowFilePath(subject.filePath());
    setWindowTitle(subject.windowTitle());
    m_Outlets->m_Graphic->setAccessibleName(subject.text());
    m_Outlets->m_RangeTitle->setText(subject.text());
    setupPages();
    setupKeys();
    setupDrawer(table);
}

HistoryWindow::~HistoryWindow() = default;

void HistoryWindow::setupPages() {
    m_Outlets->m_TabView->setTransitionType(slideTransition);
    m_Outlets->m_TabView->setTransitionOptions(slideOptions);
    m_Outlets->m_Graphic->setBGAlpha(backgroundAlpha);
    keepRoomWhileHidden(m_Outlets->m_Graphic);
    keepRoomWhileHidden(m_Outlets->m_UpdateProgressIndicator);
}

void HistoryWindow::setupKeys() {
    for (const auto& [key, button] : {std::pair(Qt::Key_Return, m_Outlets->m_ShowButton),
                                      std::pair(Qt::Key_Enter, m_Outlets->m_ShowButton),
                                      std::pair(Qt::Key_Escape, m_Outlets->m_CancelButton)}) {
        auto* shortcut = new QShortcut(key, m_Outlets->m_RangePage);
        shortcut->setContext(Qt::WidgetWithChildrenShortcut);
        connect(shortcut, &QShortcut::activated, button, &QPushButton::click);
    }
    auto* closeKey = new QShortcut(QKeySequence::Close, this);
    connect(closeKey, &QShortcut::activated, this, &QWidget::close);
}

void HistoryWindow::setupDrawer(ConnectionsTableView* table) {
    auto* content = new QWidget;
    auto* layout = new QVBoxLayout(content);
    layout->setContentsMargins(0, drawerMargin, drawerMargin, drawerMargin);
    layout->addWidget(table);
    content->setFixedWidth(narrowestDrawer);
    m_Outlets->m_Drawer->setContentView(content);
    connect(m_Outlets->m_ToggleDrawerButton, &DisclosureButton::clicked, this, &HistoryWindow::toggleDrawer);
    connect(m_Outlets->m_ConnectionsButton, &QPushButton::clicked, this, &HistoryWindow::toggleDrawer);
}

void HistoryWindow::toggleDrawer() {
    Drawer* drawer = m_Outlets->m_Drawer;
    if (!drawer->isOpen() && m_DrawerRoom == 0) {  // else it is still closing in the room that it had
        makeRoomForDrawer();
    }
    if (m_DrawerRoom > 0 && !drawer->isOpen()) {
        drawer->setOpenAtOnce(true);  // in the room beside: the chart need not move
    } else {
        drawer->toggle();
    }
}

bool HistoryWindow::isSizeFixed() const {
    return isMaximized() || isFullScreen();
}

/** Beside the chart as far as the screen goes, and where that is not enough half of the window's width. */
void HistoryWindow::makeRoomForDrawer() {
    const int beside = screen()->availableGeometry().right() - frameGeometry().right();
    m_DrawerRoom = isSizeFixed() ? 0 : std::clamp(beside, 0, widestDrawer);
    const int wide = width() + m_DrawerRoom;
    m_Outlets->m_Drawer->contentView()->setFixedWidth(std::clamp(wide / 2, narrowestDrawer, widestDrawer));
    resize(wide, height());
}

void HistoryWindow::giveDrawerRoomBack() {
    if (!isSizeFixed()) {
        resize(width() - m_DrawerRoom, height());
    }
    m_DrawerRoom = 0;
}

void HistoryWindow::setDrawerSwitchesEnabled(bool isEnabled) {
    m_Outlets->m_ToggleDrawerButton->setEnabled(isEnabled);
    m_Outlets->m_ConnectionsButton->setEnabled(isEnabled);
}

void HistoryWindow::closeEvent(QCloseEvent* event) {
    emit aboutToClose();
    QWidget::closeEvent(event);
}
