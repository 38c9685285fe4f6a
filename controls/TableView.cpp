// SPDX-License-Identifier: GPL-3.0-or-later
#include "controls/TableView.h"

#include <QAction>
#include <QClipboard>
#include <QContextMenuEvent>
#include <QGuiApplication>
#include <QHeaderView>
#include <QKeyEvent>
#include <QMenu>
#include <QMouseEvent>
#include <QPainter>
#include <QResizeEvent>
#include <algorithm>

namespace {

constexpr int defaultRowHeight = 26;
constexpr int headerHeight = 30;

}  // namespace

TableView::TableView(QWidget* parent)
    : QTableView(parent), m_CopyAction(new QAction(QIcon::fromTheme("edit-copy"), "Copy", this)) {
    setShowGrid(false);
    setSelectionBehavior(SelectRows);
    setSelectionMode(SingleSelection);
    setEditTriggers(NoEditTriggers);
    setVerticalScrollMode(ScrollPerPixel);
    setHorizontalScrollMode(ScrollPerPixel);
    setTabKeyNavigation(false);
    setIconSize(QSize(16, 16));
    setWordWrap(false);
    setCornerButtonEnabled(false);
    verticalHeader()->hide();
    verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    verticalHeader()->setDefaultSectionSize(defaultRowHeight);
    horizontalHeader()->setFixedHeight(headerHeight);
    horizontalHeader()->setMinimumSectionSize(24);
    horizontalHeader()->setHighlightSections(false);
    horizontalHeader()->setResizeContentsPrecision(0);  // fitted to its contents: the visible ones
    QFont captionFont = font();
    captionFont.setPointSizeF(captionFont.pointSizeF() - 1);
    horizontalHeader()->setFont(captionFont);
    setupCopyAction();
}

void TableView::setupCopyAction() {
    m_CopyAction->setShortcut(QKeySequence::Copy);
    m_CopyAction->setShortcutContext(Qt::WidgetShortcut);
    m_CopyAction->setEnabled(false);
    connect(m_CopyAction, &QAction::triggered, this, &TableView::copySelectedRow);
    addAction(m_CopyAction);
}

TableView::RowRange TableView::visibleRows() const {
    const int rows = model() != nullptr ? model()->rowCount() : 0;
    const int first = rowAt(0);
    const int last = rowAt(viewport()->height() - 1);
    return first < 0 ? RowRange() : RowRange{first, last < 0 ? rows - 1 : last};
}

void TableView::setEmptyText(const QString& text) {
    if (m_EmptyText != text) {
        m_EmptyText = text;
        setAccessibleDescription(text);
        viewport()->update();
    }
}

void TableView::setMenu(QMenu* menu) {
    m_Menu = menu;
}

QString TableView::selectedRowText() const {
    const QModelIndexList rows =
        selectionModel() != nullptr ? selectionModel()->selectedRows() : QModelIndexList();
    QStringList texts;
    for (int visual = 0; !rows.isEmpty() && visual < horizontalHeader()->count(); ++visual) {
        const int column = horizontalHeader()->logicalIndex(visual);
        const QString text = rows.first().siblingAtColumn(column).data().toString();
        if (!text.isEmpty() || !model()->headerData(column, Qt::Horizontal).toString().isEmpty()) {
            texts.append(text);
        }
    }
    return texts.join('\t');
}

void TableView::copySelectedRow() {
    QGuiApplication::clipboard()->setText(selectedRowText());
}

void TableView::updateCopyAction() {
    m_CopyAction->setEnabled(selectionModel() != nullptr && selectionModel()->hasSelection());
}

void TableView::keyboardSearch(const QString& keys) {
    if (model() == nullptr) {
        return;
    }
    const int selected = selectionModel()->hasSelection() ? currentIndex().row() : -1;
    const int row = m_Search.find(*model(), m_SearchColumn, selected, keys);
    if (row >= 0) {
        setCurrentIndex(model()->index(row, m_SearchColumn));
    }
}

void TableView::reset() {
    QTableView::reset();
    updateCopyAction();  // a selection that goes with its model says nothing
}

/** Amid a name a space is part of it, whatever it is a shortcut for. */
bool TableView::event(QEvent* event) {
    if (event->type() == QEvent::ShortcutOverride && static_cast<QKeyEvent*>(event)->key() == Qt::Key_Space &&
        m_Search.isGoingOn()) {
        event->accept();
        return true;
    }
    return QTableView::event(event);
}

/** The base class makes the first row the current one unselected, and the first key would then do nothing. */
void TableView::focusInEvent(QFocusEvent* event) {
    const bool hadCurrent = currentIndex().isValid();
    QTableView::focusInEvent(event);
    if (!hadCurrent && selectionModel() != nullptr) {
        selectionModel()->clearCurrentIndex();
    }
}

void TableView::contextMenuEvent(QContextMenuEvent* event) {
    const bool isFromMouse = event->reason() == QContextMenuEvent::Mouse;
    const QPoint point = viewport()->mapFromGlobal(event->globalPos());
    if (m_Menu == nullptr || (isFromMouse && !viewport()->rect().contains(point))) {  // on the header, say
        event->ignore();
    } else if (isFromMouse) {
        selectAlone(rowAt(point.y()));
        m_Menu->popup(event->globalPos());
    } else if (selectionModel() != nullptr && selectionModel()->hasSelection()) {
        m_Menu->popup(viewport()->mapToGlobal(visualRect(currentIndex()).bottomLeft()));
    }
}

/** -1 selects none. */
void TableView::selectAlone(int row) {
    if (selectionModel() == nullptr) {
        return;
    }
    if (row < 0) {
        selectionModel()->clear();
    } else {
        selectionModel()->setCurrentIndex(model()->index(row, m_SearchColumn),
                                          QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
    }
}

/** The base class would copy a single cell, selected or not. */
void TableView::keyPressEvent(QKeyEvent* event) {
    if (event->matches(QKeySequence::Copy)) {
        m_CopyAction->trigger();
    } else {
        QTableView::keyPressEvent(event);
    }
}

/** What a right click selects comes with its menu. */
void TableView::mousePressEvent(QMouseEvent* event) {
    if (event->button() != Qt::RightButton) {
        QTableView::mousePressEvent(event);
    }
}

void TableView::paintEvent(QPaintEvent* event) {
    QTableView::paintEvent(event);
    if (!m_EmptyText.isEmpty()) {
        drawEmptyText();
    }
}

void TableView::drawEmptyText() {
    QRect room = viewport()->rect();
    room.setTop(verticalHeader()->length() - verticalOffset());
    QPainter painter(viewport());
    painter.setPen(
        palette().color(QPalette::Active, QPalette::PlaceholderText));  // to be read, also when disabled
    painter.drawText(room, Qt::AlignCenter | Qt::TextWordWrap, m_EmptyText);
}

void TableView::resizeEvent(QResizeEvent* event) {
    QTableView::resizeEvent(event);
    if (event->oldSize().width() != event->size().width()) {  // not when a scroll bar takes height only
        emit widthChanged(viewport()->width());
    }
    emit visibleRowsChanged();
}

/** What the rows show may have changed meanwhile. */
void TableView::showEvent(QShowEvent* event) {
    QTableView::showEvent(event);
    emit visibleRowsChanged();
}

void TableView::scrollContentsBy(int dx, int dy) {
    QTableView::scrollContentsBy(dx, dy);
    if (dy != 0) {
        emit visibleRowsChanged();
    }
}

void TableView::rowsAboutToBeRemoved(const QModelIndex& parent, int start, int end) {
    const int current = currentIndex().row();
    if (current >= start && current <= end) {
        setCurrentIndex({});
    }
    QTableView::rowsAboutToBeRemoved(parent, start, end);
}

QModelIndex TableView::moveCursor(CursorAction action, Qt::KeyboardModifiers modifiers) {
    const int rows = model() != nullptr ? model()->rowCount() : 0;
    const int column = std::max(currentIndex().column(), 0);
    if (rows > 0 && action == MoveEnd) {
        return model()->index(rows - 1, column);
    }
    if (rows > 0 && action == MoveHome) {
        return model()->index(0, column);
    }
    if (action == MoveNext && !currentIndex().isValid()) {
        return {};  // asked when the table gets the focus: the first key would leave that row unselected
    }
    return QTableView::moveCursor(action, modifiers);
}

void TableView::selectionChanged(const QItemSelection& selected, const QItemSelection& deselected) {
    QTableView::selectionChanged(selected, deselected);
    updateCopyAction();
}
