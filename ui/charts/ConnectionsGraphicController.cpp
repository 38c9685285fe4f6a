// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/charts/ConnectionsGraphicController.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <thread>
#include <utility>

#include "config/ConfigStorage.h"
#include "daemon/DaemonConnection.h"
#include "ui/applications/SortDirection.h"
#include "ui/charts/ConnectionsExportDialog.h"
#include "ui/charts/ConnectionsTableView.h"
#include "ui/charts/HistoryGraphicWorker.h"
#include "ui/charts/HistoryRangePage.h"
#include "ui/charts/HistoryWindow.h"
#include "ui/charts/TrafficFormat.h"
#include "ui/charts/TrafficGraphic.h"
#include "ui_ConnectionsGraphic.h"

namespace {

using namespace std::chrono_literals;

constexpr std::int32_t allProtocols = -1;
constexpr std::int32_t allApplications = -1;
constexpr std::int32_t sortByNothing = 7;

constexpr QSizeF colorLegendSize(100, 140);  // pixels, before it is fitted to its items

constexpr qint64 secondsPerStorageMonth = 2'592'000;  // 30 days
constexpr auto cancelPollInterval = 50ms;

/** What the windows are closed from; each takes itself out. */
std::vector<ConnectionsGraphicController*> sGraphicsList;

}  // namespace

ConnectionsGraphicController* ConnectionsGraphicController::graphic() {
    return graphic(nullptr, allProtocols);
}

ConnectionsGraphicController* ConnectionsGraphicController::graphic(std::int32_t socketProtocol) {
    return graphic(nullptr, socketProtocol);
}

ConnectionsGraphicController* ConnectionsGraphicController::graphic(
    std::shared_ptr<const ApplicationInfo> application) {
    return graphic(std::move(application), allProtocols);
}

ConnectionsGraphicController* ConnectionsGraphicController::graphic(
    std::shared_ptr<const ApplicationInfo> application, std::int32_t socketProtocol) {
    return new ConnectionsGraphicController(std::move(application), socketProtocol);
}

const std::vector<ConnectionsGraphicController*>& ConnectionsGraphicController::graphicsList() {
    return sGraphicsList;
}

void ConnectionsGraphicController::closeAllGraphics() {
    for (ConnectionsGraphicController* graphic : sGraphicsList) {
        graphic->m_UpdateNeedCancel = true;  // all at once, so that they are waited for at once
    }
    while (!sGraphicsList.empty()) {
        sGraphicsList.front()->close();
    }
}

ConnectionsGraphicController::ConnectionsGraphicController(std::shared_ptr<const ApplicationInfo> application,
                                                           std::int32_t socketProtocol)
    : m_NeedChangeTab(false),
      m_Application(std::move(application)),
      m_SocketProtocol(socketProtocol),
      m_Subject(m_Application.get(), socketProtocol),
      m_ConnectionsList(ConnectionsIterator::iterator()),
      m_ConnectionsTableModel(
          [this](auto first, auto count) { return m_ConnectionsList->prefetch(first, count); }),
      m_ConnectionsTable(new ConnectionsTableView(m_ConnectionsTableModel)),
      m_Window(std::make_unique<HistoryWindow>(m_Subject, m_ConnectionsTable)),
      m_Outlets(m_Window->outlets()),
      m_ConnectionsSortField(sortByNothing),
      m_ConnectionsSortDirection(Unsorted),
      m_UpdateStarted(false),
      m_UpdateNeedCancel(false),
      m_GraphicStartTime(0) {
    awakeFromNib();
    sGraphicsList.push_back(this);
}

ConnectionsGraphicController::~ConnectionsGraphicController() {
    m_Outlets.m_Graphic->setDelegate(nullptr);
}

void ConnectionsGraphicController::awakeFromNib() {
    m_Outlets.m_Graphic->setDelegate(this);
    connect(m_Window.get(), &HistoryWindow::aboutToClose, this,
            &ConnectionsGraphicController::windowWillClose);
    setupCommands();
    setupTable();
    setupDrawer();
    setupRange();
    setupGraphic();
    updateConnectionsTable();
    beginUpdateGraphic();
}

void ConnectionsGraphicController::setupCommands() {
    connect(m_Outlets.m_ChangeRangeButton, &QPushButton::clicked, this,
            &ConnectionsGraphicController::changeTab);
    connect(m_Outlets.m_ShowButton, &QPushButton::clicked, this, &ConnectionsGraphicController::changeTab);
    connect(m_Outlets.m_CancelButton, &QPushButton::clicked, this,
            &ConnectionsGraphicController::cancelRange);
}

void ConnectionsGraphicController::setupTable() {
    connect(m_ConnectionsTable, &TableView::visibleRowsChanged, this,
            &ConnectionsGraphicController::fetchVisibleRows);
    connect(m_ConnectionsTable->selectionModel(), &QItemSelectionModel::selectionChanged, this,
            &ConnectionsGraphicController::tableViewSelectionDidChange);
    connect(m_ConnectionsTable, &ConnectionsTableView::columnClicked, this,
            &ConnectionsGraphicController::didClickTableColumn);
    connect(m_ConnectionsTable, &ConnectionsTableView::exportWanted, this,
            &ConnectionsGraphicController::exportConnections);
}

void ConnectionsGraphicController::setupDrawer() {
    const Drawer* drawer = m_Outlets.m_Drawer;
    connect(drawer, &Drawer::willOpen, this, &ConnectionsGraphicController::drawerWillOpen);
    connect(drawer, &Drawer::willClose, this, &ConnectionsGraphicController::drawerWillClose);
    connect(drawer, &Drawer::didOpen, this, &ConnectionsGraphicController::drawerDidOpen);
    connect(drawer, &Drawer::didClose, this, &ConnectionsGraphicController::drawerDidClose);
}

void ConnectionsGraphicController::setupRange() {
    m_Range = std::make_unique<HistoryRangePage>(
        HistoryRangePickers::Picker{m_Outlets.m_StartTime, m_Outlets.m_StartCalendar},
        HistoryRangePickers::Picker{m_Outlets.m_EndTime, m_Outlets.m_EndCalendar}, m_Outlets.m_Presets);
    m_Range->setEarliestTime(earliestTime());
    connect(m_Outlets.m_Presets, &QListWidget::itemActivated, this, &ConnectionsGraphicController::changeTab);
    showRange();
}

/** Nothing where the history is kept for ever. */
QDateTime ConnectionsGraphicController::earliestTime() const {
    const qint64 months = ConfigStorage::sharedConfig()->maxStorageTimeInMonths();
    return months < 1 ? QDateTime() : QDateTime::currentDateTime().addSecs(-months * secondsPerStorageMonth);
}

void ConnectionsGraphicController::showRange() {
    m_Outlets.m_StartTimeCaption->setText(NSDateToNSString(m_Range->startTime()));
    m_Outlets.m_EndTimeCaption->setText(NSDateToNSString(m_Range->endTime()));
}

void ConnectionsGraphicController::setupGraphic() {
    GraphicView& graphic = *m_Outlets.m_Graphic;
    m_Window->layout()->activate();  // the legends need to know the chart's size
    m_Outlets.m_GraphicPage->layout()->activate();
    graphic.setUpdatesDisabled(true);
    graphic.setXAxeDescription("Date/Time");
    graphic.setYAxeDescription("Data (Mbit)");
    TrafficGraphic::appendLines(graphic, false);
    TrafficGraphic::addLegends(graphic, colorLegendSize, m_Subject.graphicTitle());
    graphic.setUpdatesDisabled(false);
}

QWidget* ConnectionsGraphicController::window() const {
    return m_Window.get();
}

void ConnectionsGraphicController::show() {
    m_Window->show();
    m_Window->raise();
}

void ConnectionsGraphicController::close() {
    m_Window->close();
}

void ConnectionsGraphicController::beginUpdateGraphic() {
    cancelUpdateGraphic();
    m_Worker.reset();  // with what it still had to say
    m_UpdateStarted = true;
    m_UpdateNeedCancel = false;
    m_Outlets.m_Graphic->hide();
    m_Outlets.m_DataFlow->setEnabled(false);  // of the range before, until the new one is known
    m_Outlets.m_UpdateCover->cover("Computing...", QString("%1 to %2")
                                                       .arg(m_Outlets.m_StartTimeCaption->text().trimmed(),
                                                            m_Outlets.m_EndTimeCaption->text().trimmed()));
    m_Outlets.m_UpdateProgressIndicator->setValue(0);
    m_Outlets.m_UpdateProgressIndicator->show();

    HistoryGraphicWorker::Task task{m_Range->startTime(), m_Range->endTime(), {}, m_SocketProtocol};
    if (m_Application != nullptr) {
        task.applicationId = m_Application->id();
    }
    clearGraphic(HistoryGraphicWorker::mathOf(task));
    m_Worker = std::make_unique<HistoryGraphicWorker>(task, m_UpdateStarted, m_UpdateNeedCancel);
    const HistoryGraphicWorker* worker = m_Worker.get();
    connect(worker, &HistoryGraphicWorker::stepDone, this, &ConnectionsGraphicController::stepDone);
    connect(worker, &HistoryGraphicWorker::pointsDone, this, &ConnectionsGraphicController::pointsDone);
    connect(worker, &HistoryGraphicWorker::dataFlowKnown, this, &ConnectionsGraphicController::dataFlowKnown);
    connect(worker, &HistoryGraphicWorker::graphicUpdated, this,
            &ConnectionsGraphicController::graphicUpdated);
}

void ConnectionsGraphicController::cancelUpdateGraphic() {
    if (!m_UpdateStarted) {
        return;
    }
    m_UpdateNeedCancel = true;
    while (m_UpdateStarted) {
        std::this_thread::sleep_for(cancelPollInterval);
    }
}

/** Nothing of it is seen before all points are there. */
void ConnectionsGraphicController::clearGraphic(const HistoryGraphicMath& math) {
    GraphicView& graphic = *m_Outlets.m_Graphic;
    m_GraphicStartTime = math.start;
    graphic.setUpdatesDisabled(true);
    graphic.clearSelection();
    graphic.clearLine(TrafficGraphic::ReceivedLine);
    graphic.clearLine(TrafficGraphic::SentLine);
    graphic.setViewport(QRectF(0, 0, math.viewportWidth(), 1));
}

void ConnectionsGraphicController::stepDone(double x, qint64 receivedBytes, qint64 sendedBytes) {
    GraphicView& graphic = *m_Outlets.m_Graphic;
    graphic.addPointToLine(TrafficGraphic::ReceivedLine, QPointF(x, static_cast<float>(receivedBytes)));
    graphic.addPointToLine(TrafficGraphic::SentLine, QPointF(x, static_cast<float>(sendedBytes)));
    m_Outlets.m_UpdateProgressIndicator->setValue(static_cast<int>(m_Worker->math().progress(x)));
}

void ConnectionsGraphicController::pointsDone(qint64 peak) {
    GraphicView& graphic = *m_Outlets.m_Graphic;
    graphic.setMeshCellSize(QSizeF(HistoryGraphicMath::gridStep(m_Worker->math().span),
                                   calcGraphicMeshHeightFromBytesPeak(static_cast<double>(peak))));
    graphic.recalcVisibleHeight();
    tableViewSelectionDidChange();  // a row that is still selected keeps its mark, in the new range
    graphic.setUpdatesDisabled(false);
    graphic.display();
}

void ConnectionsGraphicController::dataFlowKnown(qint64 receivedBytes, qint64 sendedBytes) {
    m_Outlets.m_TotalSendedBytesCaption->setText(bytesToNSString(sendedBytes));
    m_Outlets.m_TotalReceivedBytesCaption->setText(bytesToNSString(receivedBytes));
    m_Outlets.m_DataFlow->setEnabled(true);
}

void ConnectionsGraphicController::graphicUpdated() {
    m_Outlets.m_UpdateProgressIndicator->hide();
    m_Outlets.m_Graphic->show();
    m_Outlets.m_UpdateCover->uncover();
}

void ConnectionsGraphicController::updateConnectionsTable() {
    const std::int32_t applicationId = m_Application != nullptr ? m_Application->id() : allApplications;
    m_ConnectionsList->setFilterWithStartTime(m_Range->startTime(), m_Range->endTime(), applicationId,
                                              m_SocketProtocol, m_ConnectionsSortField,
                                              m_ConnectionsSortDirection);
    m_ConnectionsTableModel.orderChanged();
    m_ConnectionsTableModel.refresh(m_ConnectionsList->countConnections());
    fetchVisibleRows();
    tableViewSelectionDidChange();
}

/** None while the drawer is closed: nobody sees a row. */
void ConnectionsGraphicController::fetchVisibleRows() {
    if (m_ConnectionsTable->isVisible()) {
        const auto [first, last] = m_ConnectionsTable->visibleRows();
        m_ConnectionsTableModel.fetchRows(first, last);
    }
}

std::shared_ptr<const ConnectionInfo> ConnectionsGraphicController::selectedConnection() {
    const QModelIndexList rows = m_ConnectionsTable->selectionModel()->selectedRows();
    return rows.isEmpty() ? nullptr : m_ConnectionsTableModel.connectionForRow(rows.first().row());
}

void ConnectionsGraphicController::tableViewSelectionDidChange() {
    const auto connection = selectedConnection();
    if (connection == nullptr) {
        m_Outlets.m_Graphic->clearSelection();
        return;
    }
    const auto xOf = [this](const QDateTime& time) {
        return static_cast<float>(static_cast<double>(time.toMSecsSinceEpoch()) / 1000.0 -
                                  m_GraphicStartTime);
    };
    m_Outlets.m_Graphic->setSelectionForAxe(TrafficGraphic::XAxe, xOf(connection->startTime()),
                                            xOf(connection->endTime()));
}

void ConnectionsGraphicController::didClickTableColumn(int columnId) {
    const std::int32_t field = ConnectionsTableModel::sortFieldFromColumnId(columnId);
    const bool isSameField = field == m_ConnectionsSortField;
    m_ConnectionsSortDirection = isSameField ? nextDirection(m_ConnectionsSortDirection) : Ascending;
    m_ConnectionsSortField = field;
    if (field == sortByNothing) {
        m_ConnectionsSortDirection = Unsorted;
    }
    m_ConnectionsTable->showSorting(columnId, m_ConnectionsSortDirection);
    updateConnectionsTable();
}

QString ConnectionsGraphicController::axeValueToString(float value, int axe) {
    switch (axe) {
        case TrafficGraphic::XAxe:
            return NSDateToNSString(dateAtX(value));
        case TrafficGraphic::YAxe:
            return TrafficGraphic::bytesToMegabitsString(value);
        default:
            return {};
    }
}

QString ConnectionsGraphicController::readOutValueToString(float value, int axe) {
    return axe == TrafficGraphic::YAxe ? TrafficGraphic::bytesToReadableString(value)
                                       : axeValueToString(value, axe);
}

/** In the step that ends at the point. */
QString ConnectionsGraphicController::valueUnit() {
    return "bytes";
}

QDateTime ConnectionsGraphicController::dateAtX(float x) {
    return QDateTime::fromMSecsSinceEpoch(
        std::llround((m_GraphicStartTime + static_cast<double>(x)) * 1000.0));
}

/** The cursor lives until the last who fetches from it is gone. */
void ConnectionsGraphicController::exportConnections() {
    ConnectionsExportDialog::ask(
        m_Window.get(), QString("Connections (%1)").arg(m_Subject.text()),
        [list = m_ConnectionsList](auto first, auto count) { return list->prefetch(first, count); },
        m_ConnectionsTableModel.rowCount());
}

void ConnectionsGraphicController::changeTab() {
    if (m_NeedChangeTab) {
        return;
    }
    if (m_Outlets.m_TabView->currentIndex() != 0) {
        m_Range->accept();
        showRange();
        updateConnectionsTable();
        beginUpdateGraphic();
        showGraphicPage();
    } else if (isDrawerClosed()) {
        showRangePage();
    } else {
        m_NeedChangeTab = true;
        m_Window->setDrawerSwitchesEnabled(false);  // a drawer that turned back would never be closed
        m_Outlets.m_Drawer->toggle();
    }
}

/** Back to the chart as it was, or was going to be. */
void ConnectionsGraphicController::cancelRange() {
    if (m_Outlets.m_TabView->currentIndex() == 0) {
        return;
    }
    m_Range->restore();
    if (m_IsGraphicIncomplete) {
        beginUpdateGraphic();
    }
    showGraphicPage();
}

bool ConnectionsGraphicController::isDrawerClosed() const {
    return m_Outlets.m_ToggleDrawerButton->isChecked();
}

/** With the drawer as it was before the other page. */
void ConnectionsGraphicController::showGraphicPage() {
    m_Outlets.m_TabView->selectFirstTabViewItem();
    if (!isDrawerClosed()) {
        m_Outlets.m_Drawer->toggle();
    }
}

/** The switch says where a drawer is going to be, so that it is never taken for what it will not be. */
void ConnectionsGraphicController::drawerWillOpen() {
    m_Outlets.m_ToggleDrawerButton->setChecked(false);
}

void ConnectionsGraphicController::drawerWillClose() {
    if (!m_NeedChangeTab) {
        m_Outlets.m_ToggleDrawerButton->setChecked(true);
    }
}

void ConnectionsGraphicController::drawerDidOpen() {
    m_Outlets.m_ToggleDrawerButton->setChecked(false);
}

void ConnectionsGraphicController::drawerDidClose() {
    if (!m_NeedChangeTab) {
        m_Outlets.m_ToggleDrawerButton->setChecked(true);
        m_Window->giveDrawerRoomBack();
        return;
    }
    m_NeedChangeTab = false;
    m_Window->setDrawerSwitchesEnabled(true);
    m_Range->setEarliestTime(earliestTime());
    showRangePage();
}

void ConnectionsGraphicController::showRangePage() {
    m_Outlets.m_TabView->selectLastTabViewItem();
    m_Range->open();
    m_IsGraphicIncomplete = m_UpdateStarted;
    cancelUpdateGraphic();
}

void ConnectionsGraphicController::windowWillClose() {
    const auto self = std::find(sGraphicsList.begin(), sGraphicsList.end(), this);
    if (self == sGraphicsList.end()) {
        return;  // it was closed before
    }
    cancelUpdateGraphic();
    m_Worker.reset();
    sGraphicsList.erase(self);
    for (QObject* sender : std::initializer_list<QObject*>{
             m_ConnectionsTable, m_ConnectionsTable->selectionModel(), m_Outlets.m_Drawer}) {
        sender->disconnect(this);  // nothing that still moves, or goes with the window, is of interest
    }
    deleteLater();
}
