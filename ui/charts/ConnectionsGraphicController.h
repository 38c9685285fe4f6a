// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDateTime>
#include <QObject>
#include <atomic>
#include <cstdint>
#include <memory>
#include <vector>

#include "controls/chart/GraphicViewDelegate.h"
#include "daemon/ApplicationInfo.h"
#include "daemon/ConnectionInfo.h"
#include "daemon/ConnectionsIterator.h"
#include "ui/charts/ConnectionsTableModel.h"
#include "ui/charts/HistorySubject.h"

class ConnectionsTableView;
class HistoryGraphicWorker;
struct HistoryGraphicMath;
class HistoryRangePage;
class HistoryWindow;
class QWidget;

namespace Ui {
class ConnectionsGraphic;
}

/**
 * A window of the past: a chart of the traffic of one application, or of all, over a range of dates, a page to choose
 * the range on, and in a drawer the connections of that range. Any number may be open. A controller lives until its
 * window closes, however that comes about, and goes when the event loop comes to it. Main thread.
 */
class ConnectionsGraphicController : public QObject, public GraphicViewDelegate {
    Q_OBJECT

  public:
    /** Without an application: all together. `socketProtocol`: 6 TCP, 17 UDP, -1 all. */
    static ConnectionsGraphicController* graphic();
    static ConnectionsGraphicController* graphic(std::int32_t socketProtocol);
    static ConnectionsGraphicController* graphic(std::shared_ptr<const ApplicationInfo> application);
    static ConnectionsGraphicController* graphic(std::shared_ptr<const ApplicationInfo> application,
                                                 std::int32_t socketProtocol);

    /** The open ones, oldest first. */
    static const std::vector<ConnectionsGraphicController*>& graphicsList();
    static void closeAllGraphics();

    ~ConnectionsGraphicController() override;

    ConnectionsGraphicController(const ConnectionsGraphicController&) = delete;
    ConnectionsGraphicController& operator=(const ConnectionsGraphicController&) = delete;

    QWidget* window() const;

    void show();
    void close();

    /** Begins to compute the chart of the range that the pickers say, after what is being computed was cancelled. */
    void beginUpdateGraphic();

    /** Returns when no points are being computed any more: at most a step later, and what looking for it takes. */
    void cancelUpdateGraphic();

    /** From the chart to the page of the range, once the drawer is closed, or back with the new range. */
    void changeTab();

    /** Null when no row is selected. */
    std::shared_ptr<const ConnectionInfo> selectedConnection();

    QString axeValueToString(float value, int axe) override;
    QString readOutValueToString(float value, int axe) override;
    QString valueUnit() override;
    QDateTime dateAtX(float x) override;

  private:
    ConnectionsGraphicController(std::shared_ptr<const ApplicationInfo> application,
                                 std::int32_t socketProtocol);

    void awakeFromNib();
    void setupCommands();
    void setupTable();
    void setupDrawer();
    void setupRange();
    void setupGraphic();
    QDateTime earliestTime() const;
    void showRange();
    void showRangePage();
    void showGraphicPage();
    void cancelRange();

    void clearGraphic(const HistoryGraphicMath& math);
    void stepDone(double x, qint64 receivedBytes, qint64 sendedBytes);
    void pointsDone(qint64 peak);
    void dataFlowKnown(qint64 receivedBytes, qint64 sendedBytes);
    void graphicUpdated();

    void updateConnectionsTable();
    void fetchVisibleRows();
    void didClickTableColumn(int columnId);
    void exportConnections();
    void tableViewSelectionDidChange();

    bool isDrawerClosed() const;
    void drawerWillOpen();
    void drawerWillClose();
    void drawerDidOpen();
    void drawerDidClose();
    void windowWillClose();

    bool m_NeedChangeTab;  ///< the page of the range is to be shown once the drawer is closed
    const std::shared_ptr<const ApplicationInfo> m_Application;
    const std::int32_t m_SocketProtocol;
    const HistorySubject m_Subject;
    const std::shared_ptr<ConnectionsIterator> m_ConnectionsList;
    ConnectionsTableModel m_ConnectionsTableModel;
    ConnectionsTableView* const m_ConnectionsTable;  ///< in m_Window
    const std::unique_ptr<HistoryWindow> m_Window;
    Ui::ConnectionsGraphic& m_Outlets;  ///< of m_Window
    std::unique_ptr<HistoryRangePage> m_Range;
    std::int32_t m_ConnectionsSortField;
    std::int32_t m_ConnectionsSortDirection;
    std::atomic<bool> m_UpdateStarted;  ///< by the main thread when a computation begins, false by its thread
    std::atomic<bool> m_UpdateNeedCancel;
    double m_GraphicStartTime;           ///< X = 0 of the chart, in seconds since 1970
    bool m_IsGraphicIncomplete = false;  ///< its computation was cancelled by the page of the range
    std::unique_ptr<HistoryGraphicWorker> m_Worker;  ///< of the latest computation
};
