// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/applications/SortableTableView.h"

#include <QHeaderView>

#include "ui/applications/SortDirection.h"

SortableTableView::SortableTableView(QWidget* parent) : TableView(parent) {
    QHeaderView* header = horizontalHeader();
    header->setSectionsClickable(true);
    header->setSortIndicatorShown(true);
    header->setSortIndicator(-1, Qt::AscendingOrder);
    connect(header, &QHeaderView::sectionClicked, this, &SortableTableView::columnClicked);
    connect(header, &QHeaderView::sectionDoubleClicked, this, &SortableTableView::columnClicked);
}

void SortableTableView::showSorting(int column, std::int32_t direction) {
    horizontalHeader()->setSortIndicator(direction != Unsorted ? column : -1,
                                         direction == Descending ? Qt::DescendingOrder : Qt::AscendingOrder);
}
