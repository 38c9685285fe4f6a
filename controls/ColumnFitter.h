// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QObject>
#include <cstdint>
#include <vector>

class QHeaderView;
class TableView;

/**
 * Keeps a table's columns as wide as its viewport. Columns share the width by their weights; one that the
 * user resized, or fitted to its contents by a double click on its border, keeps its width from then on.
 *
 * While a border is dragged, the columns left of it stand still and those right of it give way; a scroll bar
 * appears after that only, and only if the columns cannot get narrower. The weights of the others then become
 * what they were left with, so that nothing moves when the border is released. Main thread.
 */
class ColumnFitter : public QObject {
    Q_OBJECT

  public:
    struct Column {
        int minimumWidth;    ///< pixels
        int preferredWidth;  ///< pixels; a column that stretches gets no wider
        int stretch;         ///< weight; 0 has the preferred width always
    };

    static constexpr int unlimitedWidth = 1 << 20;

    /** Columns are those of the table's model, by logical index. The table owns the fitter. */
    ColumnFitter(TableView* table, const std::vector<Column>& columns);

    /** Widths that the user chose, what the others share, and the visual order; no sort indicator. */
    QByteArray save() const;

    /** False if `state` was not saved by a table with as many columns; nothing has changed then. */
    bool restore(const QByteArray& state);

  protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

  private:
    struct Share {
        Column column;
        int weight;
        int chosenWidth = 0;  ///< by the user, in pixels; 0 for none
    };

    void sectionResized(int column, int oldWidth, int width);
    void endDrag();

    /** Gives all columns their widths, but leaves those that are visually before `firstVisual`. */
    void fit(int firstVisual = 0);
    std::vector<int> widths(int room, const std::vector<int>& columns) const;
    bool isFree(int column) const;

    /** Puts what was saved into `shares`, and the logical columns by visual index into `order`. */
    static bool read(const QByteArray& state, std::vector<Share>& shares, std::vector<int>& order);

    TableView* m_Table;
    QHeaderView* m_Header;
    std::vector<Share> m_Shares;
    bool m_IsButtonDown = false;
    bool m_IsDragging = false;
    bool m_IsFitting = false;
};
