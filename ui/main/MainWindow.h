// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QMainWindow>
#include <memory>

class QMenu;

namespace Ui {
class MainWindow;
}

/**
 * The main window as it looks: what its interface file says, and what such a file cannot say about keys, tool tips,
 * menus and the drawer. What its commands do is the controller's. Main thread.
 */
class MainWindow : public QMainWindow {
    Q_OBJECT

  public:
    MainWindow();
    ~MainWindow() override;

    /** What the interface file names. */
    Ui::MainWindow& outlets() const { return *m_Outlets; }

    /** In the drawer: where the details of an application are shown. */
    QWidget& details() const { return *m_Details; }

    /** A menu that speaks of the row that is selected. */
    bool isTableMenuOpen() const;

  signals:
    void aboutToClose();

  protected:
    void closeEvent(QCloseEvent* event) override;

  private:
    void setupKeys();
    void setupToolTips();
    void setupButtons();
    void setupMenus();
    void setupDrawer();

    const std::unique_ptr<Ui::MainWindow> m_Outlets;
    QMenu* m_TableMenu = nullptr;
    QWidget* m_Details = nullptr;
};
