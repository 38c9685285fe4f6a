// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "ui/applications/TableDelegate.h"

/**
 * Paints the cells of the applications table: a faint bar shows a cell's share of the sums over all applications, and
 * the totals row is set apart.
 */
class ApplicationsTableDelegate : public TableDelegate {
  public:
    using TableDelegate::TableDelegate;

    void paint(QPainter* painter, const QStyleOptionViewItem& option,
               const QModelIndex& index) const override;

  protected:
    bool isNumber(int column) const override;
    bool isSecondary(int column) const override;
    void drawBehind(QPainter& painter, const QStyleOptionViewItem& cell,
                    const QModelIndex& index) const override;
    void drawContent(QPainter& painter, const QStyleOptionViewItem& cell, int column) const override;
    int contentWidth(const QStyleOptionViewItem& cell, int column) const override;
    void initStyleOption(QStyleOptionViewItem* option, const QModelIndex& index) const override;
};
