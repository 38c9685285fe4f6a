// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QPointer>
#include <QTableView>

#include "controls/TypedSearch.h"

class QAction;
class QMenu;

/**
 * A table of whole rows without a grid that tells which rows the user can see, so that a model need fetch no
 * others, and that says in a sentence why it is empty. The keyboard goes from row to row, finds rows by the
 * text of one column, and copies the selected one. Disabled, all of it is drawn so, the header included. Main thread.
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

    /**
     * Typing selects a row by the beginning of its text in this logical column, 0 at first. Rows without text,
     * such as those that were not fetched, are passed over.
     */
    void setSearchColumn(int column) { m_SearchColumn = column; }

    /** Copies the selected row; disabled without one. */
    QAction* copyAction() const { return m_CopyAction; }

    /**
     * What the user sees of the selected row, from left to right, with tabs in between; without columns that
     * have neither a text nor a header. Empty without a selection.
     */
    QString selectedRowText() const;

    /**
     * What a right click opens, after it has selected the row under the pointer and no other, or none at all below
     * the last one; the menu key opens it for the selected row. Without a menu, which is the beginning, a right click
     * does nothing. The menu is not owned.
     */
    void setMenu(QMenu* menu);

    void keyboardSearch(const QString& keys) override;
    void reset() override;

  signals:
    /** The user scrolled, or the table has another size. Comes before the newly visible rows are painted. */
    void visibleRowsChanged();

    /** Columns may be fitted to the new width of the viewport, in pixels. */
    void widthChanged(int width);

  protected:
    bool event(QEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void scrollContentsBy(int dx, int dy) override;

    /** A selected row takes its selection along, instead of leaving it to a neighbour. */
    void rowsAboutToBeRemoved(const QModelIndex& parent, int start, int end) override;

    /** Home and End are the first and the last row. */
    QModelIndex moveCursor(CursorAction action, Qt::KeyboardModifiers modifiers) override;

    void selectionChanged(const QItemSelection& selected, const QItemSelection& deselected) override;

  private:
    void setupCopyAction();
    void copySelectedRow();
    void drawEmptyText();
    void selectAlone(int row);
    void updateCopyAction();

    QAction* m_CopyAction;
    QPointer<QMenu> m_Menu;
    QString m_EmptyText;
    TypedSearch m_Search;
    int m_SearchColumn = 0;
};
