// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/charts/ConnectionsTableView.h"

#include <QHeaderView>
#include <QMenu>
#include <QtMath>
#include <algorithm>

#include "controls/ColumnFitter.h"
#include "controls/TabularDigits.h"
#include "ui/charts/ConnectionText.h"
#include "ui/charts/ConnectionsTableDelegate.h"
#include "ui/charts/ConnectionsTableModel.h"
#include "ui/charts/TrafficFormat.h"

namespace {

constexpr int directionArrowRoom = 18;  // pixels beside the word
constexpr int narrowestAddress = 96;    // pixels

}  // namespace

ConnectionsTableView::ConnectionsTableView(ConnectionsTableModel& model, QWidget* parent)
    : SortableTableView(parent) {
    setObjectName("m_ConnectionsTable");
    setAccessibleName("Connections");
    setAlternatingRowColors(true);
    setModel(&model);
    setSearchColumn(ConnectionsTableModel::RemoteAddressColumn);
    setItemDelegate(new ConnectionsTableDelegate(font(), this));
    setEmptyText("No connections in this range");
    setupColumns();
    setupMenu();
}

/** Numbers get the room that they need; dates and addresses share the rest. */
void ConnectionsTableView::setupColumns() {
    constexpr int margins = 2 * TableDelegate::margin;
    const TabularDigits digits(font());
    const QFontMetrics text = fontMetrics();
    const QFontMetrics caption = horizontalHeader()->fontMetrics();
    const int number = qCeil(digits.width("000000")) + margins;
    const int date =
        text.horizontalAdvance(NSDateToNSString(QDateTime(QDate(2028, 9, 27), QTime(22, 58, 58)))) + margins;
    const int shortDate =
        text.horizontalAdvance(shortDateText(QDateTime(QDate(2028, 12, 28), QTime(22, 58, 58)))) + margins;
    const int direction = text.horizontalAdvance("Undefined") + directionArrowRoom + margins;
    const int bytes = std::max(qCeil(digits.width("00000.000")),
                               caption.horizontalAdvance("Received, MB") + sortArrowRoom) +
                      margins;
    const int address = qCeil(digits.width("000.000.000.000")) + margins;
    new ColumnFitter(this, {{number, number, 0},  // the table's own
                            {shortDate, date, 3},
                            {shortDate, date, 3},
                            {direction, direction, 0},
                            {bytes, bytes, 0},
                            {bytes, bytes, 0},
                            {narrowestAddress, address, 1},
                            {address, ColumnFitter::unlimitedWidth, 1}});
}

void ConnectionsTableView::setupMenu() {
    auto* menu = new QMenu(this);
    menu->addAction(copyAction());
    menu->addSeparator();
    QAction* exportAction = menu->addAction(QIcon::fromTheme("document-export"), "&Export All...");
    exportAction->setToolTip("Writes all connections of the range to a file");
    exportAction->setShortcut(QKeySequence::SaveAs);
    exportAction->setShortcutContext(Qt::WidgetShortcut);
    addAction(exportAction);
    setMenu(menu);
    connect(exportAction, &QAction::triggered, this, &ConnectionsTableView::exportWanted);
}
