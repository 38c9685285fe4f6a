// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/main/ApplicationsTableView.h"

#include <QHeaderView>
#include <QMenu>
#include <QtMath>
#include <algorithm>

#include "controls/ColumnFitter.h"
#include "controls/TabularDigits.h"
#include "ui/applications/SortDirection.h"
#include "ui/charts/TrafficFormat.h"
#include "ui/main/ApplicationsTableDelegate.h"
#include "ui/main/ApplicationsTableModel.h"

using Model = ApplicationsTableModel;

void ApplicationsTableView::setApplications(ApplicationsTableModel& model) {
    setModel(&model);
    setItemDelegate(new ApplicationsTableDelegate(font(), this));
    setSearchColumn(Model::NameColumn);
    setupColumns();
}

/** Numbers get the room that they need; names, paths and dates share the rest. */
void ApplicationsTableView::setupColumns() {
    constexpr int margins = 2 * ApplicationsTableDelegate::margin;
    const TabularDigits digits(font());
    const int numberWidth = qCeil(digits.width("00000")) + margins;
    const int iconWidth = iconSize().width() + margins;
    const QFontMetrics caption = horizontalHeader()->fontMetrics();
    const int bytesWidth = std::max(qCeil(digits.width("0000000.000")),
                                    caption.horizontalAdvance("Received, MB") + sortArrowRoom) +
                           margins;
    const QString longDate = NSDateToNSString(QDateTime(QDate(2028, 9, 27), QTime(22, 58, 58)));
    const int dateWidth = fontMetrics().horizontalAdvance(longDate) + margins;
    m_ColumnFitter = new ColumnFitter(this, {{numberWidth, numberWidth, 0},
                                             {iconWidth, iconWidth, 0},
                                             {104, 224, 3},
                                             {104, ColumnFitter::unlimitedWidth, 2},
                                             {bytesWidth, bytesWidth, 0},
                                             {bytesWidth, bytesWidth, 0},
                                             {120, dateWidth, 6}});
}

void ApplicationsTableView::setSortMenu(QMenu& menu) {
    m_SortMenu = &menu;
    for (const int column : {Model::NameColumn, Model::PathColumn, Model::ReceivedColumn, Model::SentColumn,
                             Model::LastActivityColumn, Model::NumberColumn}) {
        const QString title = column == Model::NumberColumn
                                  ? "Unsorted"
                                  : model()->headerData(column, Qt::Horizontal, Qt::DisplayRole).toString();
        QAction* item = menu.addAction(title);
        item->setCheckable(true);
        item->setData(column);
        connect(item, &QAction::triggered, this, [this, column] { emit columnClicked(column); });
    }
    showSorting(Model::NumberColumn, Unsorted);
}

void ApplicationsTableView::showSorting(int column, std::int32_t direction) {
    SortableTableView::showSorting(column, direction);
    const int shown = direction != Unsorted ? column : Model::NumberColumn;
    for (QAction* item : m_SortMenu->actions()) {
        item->setChecked(item->data().toInt() == shown);
    }
}
