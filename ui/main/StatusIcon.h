// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>
#include <QSystemTrayIcon>
#include <cstdint>
#include <memory>

class QAction;
class QMenu;

namespace Ui {
class MainWindow;
}

/** The item in the desktop's tray with its menu, from which notifications are shown too. Main thread. */
class StatusIcon : public QObject {
    Q_OBJECT

  public:
    /** Repeats some of the window's commands; the window's outlets outlive it. */
    explicit StatusIcon(const Ui::MainWindow& outlets);
    ~StatusIcon() override;

    /** Who hears `menuNeedsUpdate` fills it; an item's data is an application's id. */
    QMenu* realtimeGraphicsMenu() const { return m_RealtimeGraphicsMenu; }

    /** Of those that open further windows. */
    void setCommandsEnabled(bool isEnabled);

  signals:
    void showWanted();
    void preferencesWanted();
    void realtimeGraphicWanted(std::int32_t applicationId);
    void menuNeedsUpdate();

  private:
    void setupMenu(const Ui::MainWindow& outlets);

    const std::unique_ptr<QMenu> m_Menu;
    QMenu* m_RealtimeGraphicsMenu = nullptr;  ///< in m_Menu
    QAction* m_PreferencesAction = nullptr;   ///< in m_Menu
    QSystemTrayIcon m_Item;
};
