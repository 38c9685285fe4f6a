// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QStyledItemDelegate>

#include "controls/TabularDigits.h"

/**
 * Paints the cells of the applications table: numbers whose places line up, a faint bar that shows a cell's
 * share of the sums over all applications, and the totals row set apart. A tooltip shows what a cell has no
 * room for.
 */
class ApplicationsTableDelegate : public QStyledItemDelegate {
  public:
    /** Pixels between a cell's edge and its text. */
    static constexpr int margin = 8;

    explicit ApplicationsTableDelegate(const QFont& font, QObject* parent = nullptr);

    void paint(QPainter* painter, const QStyleOptionViewItem& option,
               const QModelIndex& index) const override;
    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override;
    bool helpEvent(QHelpEvent* event, QAbstractItemView* view, const QStyleOptionViewItem& option,
                   const QModelIndex& index) override;

  protected:
    void initStyleOption(QStyleOptionViewItem* option, const QModelIndex& index) const override;

  private:
    int textWidth(const QStyleOptionViewItem& cell, int column) const;
    void drawContent(QPainter& painter, const QStyleOptionViewItem& cell, int column) const;

    TabularDigits m_Digits;
};
