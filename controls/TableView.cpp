// SPDX-License-Identifier: GPL-3.0-or-later
#include "controls/TableView.h"

#include <QHeaderView>
#include <QPainter>
#include <QResizeEvent>

namespace {

constexpr int defaultRowHeight = 26;
constexpr int headerHeight = 30;

}  // namespace

TableView::TableView(QWidget* parent) : QTableView(parent) {
    setShowGrid(false);
    setSelectionBehavior(SelectRows);
    setSelectionMode(SingleSelection);
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
    QFont captionFont = font();
    captionFont.setPointSizeF(captionFont.pointSizeF() - 1);
    horizontalHeader()->setFont(captionFont);
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
    painter.setPen(palette().color(QPalette::PlaceholderText));
    painter.drawText(room, Qt::AlignCenter | Qt::TextWordWrap, m_EmptyText);
}

void TableView::resizeEvent(QResizeEvent* event) {
    QTableView::resizeEvent(event);
    if (event->oldSize().width() != event->size().width()) {  // not when a scroll bar takes height only
        emit widthChanged(viewport()->width());
    }
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
