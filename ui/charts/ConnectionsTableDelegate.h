// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "ui/applications/TableDelegate.h"

/** Paints the cells of the connections table, whose directions have an arrow beside the word. */
class ConnectionsTableDelegate : public TableDelegate {
  public:
    using TableDelegate::TableDelegate;

  protected:
    bool isNumber(int column) const override;
    bool isSecondary(int column) const override;
    void drawContent(QPainter& painter, const QStyleOptionViewItem& cell, int column) const override;
    void initStyleOption(QStyleOptionViewItem* option, const QModelIndex& index) const override;
    int contentWidth(const QStyleOptionViewItem& cell, int column) const override;
};
