// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/main/MainController.h"

#include <QHeaderView>
#include <QMainWindow>
#include <QtMath>
#include <algorithm>
#include <chrono>

#include "controls/TabularDigits.h"
#include "daemon/DaemonConnection.h"
#include "ui/charts/TrafficFormat.h"
#include "ui/main/ApplicationsTableDelegate.h"
#include "ui_MainWindow.h"

namespace {

using namespace std::chrono_literals;
using Model = ApplicationsTableModel;

constexpr auto updateInterval = 5s;

/** On the wire: never renumber. */
enum SortField : std::int32_t {
    SortByName = 0,
    SortByPath = 1,
    SortByLastActivity = 2,
    SortByReceived = 3,
    SortBySent = 4,
    SortByNothing = 5
};
enum SortDirection : std::int32_t { Descending = 0, Ascending = 1, Unsorted = 2 };

/** Ascending, descending, unsorted, and again. */
std::int32_t nextDirection(std::int32_t direction) {
    switch (direction) {
        case Ascending:
            return Descending;
        case Descending:
            return Unsorted;
        default:
            return Ascending;
    }
}

}  // namespace

MainController::MainController()
    : m_ApplicationsList(ApplicationsIterator::iterator()),
      m_ApplicationsSortField(SortByNothing),
      m_ApplicationsSortDirection(Unsorted),
      m_ApplicationsTableModel(
          [this](auto first, auto count) { return m_ApplicationsList->prefetch(first, count); }),
      m_Window(std::make_unique<QMainWindow>()) {
    DaemonConnection::sharedConnection()->setDelegate(this);
    setupTable();
    m_Window->show();  // the table's size decides how many rows are fetched
    connect(&m_UpdateInformationTimer, &QTimer::timeout, this, &MainController::updateInformationTimer);
    m_UpdateInformationTimer.setTimerType(Qt::PreciseTimer);
    m_UpdateInformationTimer.start(updateInterval);
    updateInformationTimer();
}

MainController::~MainController() {
    DaemonConnection::sharedConnection()->setDelegate(nullptr);
}

void MainController::setupTable() {
    Ui::MainWindow form;
    form.setupUi(m_Window.get());
    m_ApplicationsTable = form.m_ApplicationsTable;
    m_ApplicationsTable->setModel(&m_ApplicationsTableModel);
    m_ApplicationsTable->setItemDelegate(
        new ApplicationsTableDelegate(m_ApplicationsTable->font(), m_ApplicationsTable));
    connect(m_ApplicationsTable, &TableView::widthChanged, this, &MainController::fitColumns);
    connect(m_ApplicationsTable, &TableView::visibleRowsChanged, this, &MainController::fetchVisibleRows);

    QHeaderView* header = m_ApplicationsTable->horizontalHeader();
    header->setSectionsClickable(true);
    header->setSortIndicatorShown(true);
    header->setSortIndicator(-1, Qt::AscendingOrder);
    connect(header, &QHeaderView::sectionClicked, this, &MainController::didClickTableColumn);
}

/** Numbers get the room that they need; names, paths and dates share the rest, none more than it can use. */
void MainController::fitColumns(int width) {
    constexpr int margins = 2 * ApplicationsTableDelegate::margin;
    constexpr int iconWidth = 16 + margins;
    const TabularDigits digits(m_ApplicationsTable->font());
    const int numberWidth = qCeil(digits.width("0000")) + margins;
    const int bytesWidth = qCeil(digits.width("0000000.000")) + margins;
    const QString longDate = NSDateToNSString(QDateTime(QDate(2028, 9, 27), QTime(22, 58, 58)));
    const int dateWidth = m_ApplicationsTable->fontMetrics().horizontalAdvance(longDate) + margins;

    const int rest = width - numberWidth - iconWidth - 2 * bytesWidth;
    const int dateShare = std::clamp(rest / 2, 120, std::max(dateWidth, 120));
    const int nameShare = std::clamp(rest * 23 / 100, 96, 224);
    QHeaderView* header = m_ApplicationsTable->horizontalHeader();
    header->resizeSection(Model::NumberColumn, numberWidth);
    header->resizeSection(Model::IconColumn, iconWidth);
    header->resizeSection(Model::NameColumn, nameShare);
    header->resizeSection(Model::PathColumn, std::max(rest - nameShare - dateShare, 80));
    header->resizeSection(Model::ReceivedColumn, bytesWidth);
    header->resizeSection(Model::SentColumn, bytesWidth);
    header->resizeSection(Model::LastActivityColumn, dateShare);
}

void MainController::updateInformationTimer() {
    updateAllInformation();
}

void MainController::updateAllInformation() {
    m_TotalStatisticController.updateTotalStatistic();
    const auto totals = m_TotalStatisticController.totalStatisticInfo();
    const std::int32_t applications = m_ApplicationsList->countApplications();
    m_ApplicationsTableModel.refresh(applications, totals);
    fetchVisibleRows();
    const bool isNothingKnown = applications == 0 && totals != nullptr;  // a lost daemon has no totals either
    m_ApplicationsTable->setEmptyText(isNothingKnown ? "No application has used the network yet." : "");
}

void MainController::fetchVisibleRows() {
    const auto [first, last] = m_ApplicationsTable->visibleRows();
    m_ApplicationsTableModel.fetchRows(first, last);
}

std::shared_ptr<const ApplicationInfo> MainController::selectedApplication() {
    const QModelIndexList rows = m_ApplicationsTable->selectionModel()->selectedRows();
    return rows.isEmpty() ? nullptr : m_ApplicationsTableModel.applicationForRow(rows.first().row());
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
    updateAllInformation();
}

void MainController::showSortIndicator(int columnId) {
    const bool isSorted = m_ApplicationsSortDirection != Unsorted;
    const auto order = m_ApplicationsSortDirection == Descending ? Qt::DescendingOrder : Qt::AscendingOrder;
    m_ApplicationsTable->horizontalHeader()->setSortIndicator(isSorted ? columnId : -1, order);
}
