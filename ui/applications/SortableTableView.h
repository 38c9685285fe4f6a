// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>

#include "controls/TableView.h"

/** A table that is sorted by clicks on its headers; one of them has an arrow. Who listens does the sorting. */
class SortableTableView : public TableView {
    Q_OBJECT

  public:
    /** Room for the arrow beside a header's text, in pixels. */
    static constexpr int sortArrowRoom = 16;

    explicit SortableTableView(QWidget* parent = nullptr);

    /** `direction` is a `SortDirection`; unsorted, no column has the arrow. */
    virtual void showSorting(int column, std::int32_t direction);

  signals:
    void columnClicked(int column);
};
