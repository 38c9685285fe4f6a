// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QStyledItemDelegate>

#include "controls/TabularDigits.h"

/**
 * Paints a table's cells as all of the program's tables show them: numbers whose places line up, what matters less in
 * a fainter colour, and no mark of a single cell, because rows are chosen. A tooltip, always plain text, shows what a
 * cell has no room for and what the model tells beyond the cell's text.
 */
class TableDelegate : public QStyledItemDelegate {
  public:
    /** Pixels between a cell's edge and its text. */
    static constexpr int margin = 8;

    explicit TableDelegate(const QFont& font, QObject* parent = nullptr);

    void paint(QPainter* painter, const QStyleOptionViewItem& option,
               const QModelIndex& index) const override;

    /** What a double click on the border of a header makes of its column. */
    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override;

    bool helpEvent(QHelpEvent* event, QAbstractItemView* view, const QStyleOptionViewItem& option,
                   const QModelIndex& index) override;

  protected:
    static bool isEnabled(const QStyleOptionViewItem& cell);
    static bool isSelected(const QStyleOptionViewItem& cell);
    static QRect textRect(const QStyleOptionViewItem& cell);
    QColor textColor(const QStyleOptionViewItem& cell, int column) const;

    virtual bool isNumber(int column) const = 0;

    /** Steps back behind the others. */
    virtual bool isSecondary(int column) const = 0;

    /** What lies between a cell's ground and its content. */
    virtual void drawBehind(QPainter& painter, const QStyleOptionViewItem& cell,
                            const QModelIndex& index) const;

    /** With the cell's font and colour set. */
    virtual void drawContent(QPainter& painter, const QStyleOptionViewItem& cell, int column) const;

    /** The room that a cell's content needs between its margins, in pixels. */
    virtual int contentWidth(const QStyleOptionViewItem& cell, int column) const;

    void initStyleOption(QStyleOptionViewItem* option, const QModelIndex& index) const override;

    static void drawText(QPainter& painter, const QStyleOptionViewItem& cell, const QRect& room);

  private:
    TabularDigits m_Digits;
};
