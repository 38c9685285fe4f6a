// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/main/StatusIcon.h"

#include <QMenu>

#include "platform/GrowlApplicationBridge.h"
#include "ui_MainWindow.h"

StatusIcon::StatusIcon(const Ui::MainWindow& outlets)
    : m_Menu(std::make_unique<QMenu>()), m_Item(QIcon(":/app.svg")) {
    setupMenu(outlets);
    m_Item.setToolTip("Nevtora Meter");
    m_Item.setContextMenu(m_Menu.get());
    connect(&m_Item, &QSystemTrayIcon::activated, this, [this](auto reason) {
        if (reason == QSystemTrayIcon::Trigger) {
            emit showWanted();
        }
    });
    m_Item.show();
    GrowlApplicationBridge::setStatusItem(&m_Item);
}

StatusIcon::~StatusIcon() {
    GrowlApplicationBridge::setStatusItem(nullptr);
}

void StatusIcon::setupMenu(const Ui::MainWindow& outlets) {
    QAction* show = m_Menu->addAction(QIcon::fromTheme("window"), "Show Nevtora Meter");
    connect(show, &QAction::triggered, this, &StatusIcon::showWanted);
    m_RealtimeGraphicsMenu = m_Menu->addMenu("Applications");
    connect(m_RealtimeGraphicsMenu, &QMenu::triggered, this,
            [this](const QAction* item) { emit realtimeGraphicWanted(item->data().toInt()); });
    // The outer one: not every panel asks for a submenu before it shows it.
    connect(m_Menu.get(), &QMenu::aboutToShow, this, &StatusIcon::menuNeedsUpdate);
    m_Menu->addSeparator();
    m_PreferencesAction =
        m_Menu->addAction(outlets.m_PreferencesAction->icon(), outlets.m_PreferencesAction->text());
    connect(m_PreferencesAction, &QAction::triggered, this, &StatusIcon::preferencesWanted);
    m_Menu->addActions({outlets.m_HelpAction, outlets.m_HomePageAction});
    m_Menu->addSeparator();
    m_Menu->addAction(outlets.m_QuitAction);
}

void StatusIcon::setCommandsEnabled(bool isEnabled) {
    m_RealtimeGraphicsMenu->setEnabled(isEnabled);
    m_PreferencesAction->setEnabled(isEnabled);
}
