// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QWidget>
#include <memory>

class ConnectionsTableView;
class HistorySubject;

namespace Ui {
class ConnectionsGraphic;
}

/**
 * A window of the past as it looks: what its interface file says, its keys, and the drawer with the connections, for
 * which it makes itself wider. What its commands do is the controller's. Main thread.
 */
class HistoryWindow : public QWidget {
    Q_OBJECT

  public:
    /** Takes the table over, into the drawer. */
    HistoryWindow(const HistorySubject& subject, ConnectionsTableView* table);
    ~HistoryWindow() override;

    /** What the interface file names. */
    Ui::ConnectionsGraphic& outlets() const { return *m_Outlets; }

    /** Opens it beside the chart where the screen has room for it. */
    void toggleDrawer();

    /** The drawer is closed: as wide as before it was opened. */
    void giveDrawerRoomBack();

    void setDrawerSwitchesEnabled(bool isEnabled);

  signals:
    void aboutToClose();

  protected:
    void closeEvent(QCloseEvent* event) override;

  private:
    void setupPages();
    void setupKeys();
    void setupDrawer(ConnectionsTableView* table);
    void makeRoomForDrawer();
    bool isSizeFixed() const;

    const std::unique_ptr<Ui::ConnectionsGraphic> m_Outlets;
    int m_DrawerRoom = 0;  ///< pixels by which the window was widened for the drawer
};
