// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QTableView>

/**
 * A table of whole rows without a grid that tells which rows the user can see, so that a model need fetch no
 * others, and that says in a sentence why it is empty.
 */
class TableView : public QTableView {
    Q_OBJECT

  public:
    struct RowRange {
        int first = 0;
        int last = -1;  ///< inclusive; below `first` when no row is visible
    };

    explicit TableView(QWidget* parent = nullptr);

    /** Rows of which at least a part is visible. */
    RowRange visibleRows() const;

    /** Shown below the rows that there are; an empty text shows nothing. */
    void setEmptyText(const QString& text);
    QString emptyText() const { return m_EmptyText; }

  signals:
    /** The user scrolled, or the table has another size. Comes before the newly visible rows are painted. */
    void visibleRowsChanged();

    /** Columns may be fitted to the new width of the viewport, in pixels. */
    void widthChanged(int width);

  protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void scrollContentsBy(int dx, int dy) override;

    /** A selected row takes its selection along, instead of leaving it to a neighbour. */
    void rowsAboutToBeRemoved(const QModelIndex& parent, int start, int end) override;

  private:
    void drawEmptyText();

    QString m_EmptyText;
};
