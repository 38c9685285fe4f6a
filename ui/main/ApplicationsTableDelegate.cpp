// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/main/ApplicationsTableDelegate.h"

#include <QApplication>
#include <QPainter>

#include "ui/main/ApplicationsTableModel.h"

namespace {

using Model = ApplicationsTableModel;

constexpr QRgb receivedColor = 0x2ea043;
constexpr QRgb sentColor = 0xd1453b;
constexpr int barOpacityOnLight = 52;  // of 255
constexpr int barOpacityOnDark = 96;
constexpr QMarginsF barMargins(3, 3, 3, 3);
constexpr qreal barRadius = 2;

/** A hairline below the totals. */
void drawRule(QPainter& painter, const QStyleOptionViewItem& cell) {
    painter.fillRect(QRect(cell.rect.left(), cell.rect.bottom(), cell.rect.width(), 1), cell.palette.mid());
}

}  // namespace

void ApplicationsTableDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option,
                                      const QModelIndex& index) const {
    TableDelegate::paint(painter, option, index);
    if (index.row() == Model::TotalsRow) {
        drawRule(*painter, option);
    }
}

bool ApplicationsTableDelegate::isNumber(int column) const {
    return column == Model::NumberColumn || column == Model::ReceivedColumn || column == Model::SentColumn;
}

/** Names and bytes come first. */
bool ApplicationsTableDelegate::isSecondary(int column) const {
    return column == Model::NumberColumn || column == Model::PathColumn ||
           column == Model::LastActivityColumn;
}

/** The share. */
void ApplicationsTableDelegate::drawBehind(QPainter& painter, const QStyleOptionViewItem& cell,
                                           const QModelIndex& index) const {
    const double share = index.data(Model::ShareRole).toDouble();
    QRectF bar = QRectF(cell.rect).marginsRemoved(barMargins);
    bar.setWidth(bar.width() * share);
    if (bar.width() < 1) {
        return;  // a hair would look like a rule between the columns
    }
    QColor color(index.column() == Model::ReceivedColumn ? receivedColor : sentColor);
    if (isSelected(cell) || !isEnabled(cell)) {
        color = textColor(cell, index.column());
    }
    const bool isDark = cell.palette.color(QPalette::Base).lightness() < 128;
    color.setAlpha(isDark ? barOpacityOnDark : barOpacityOnLight);
    painter.setPen(Qt::NoPen);
    painter.setBrush(color);
    painter.drawRoundedRect(bar, barRadius, barRadius);
}

void ApplicationsTableDelegate::drawContent(QPainter& painter, const QStyleOptionViewItem& cell,
                                            int column) const {
    if (column == Model::IconColumn) {
        cell.icon.paint(&painter,
                        QStyle::alignedRect(cell.direction, Qt::AlignCenter, cell.decorationSize, cell.rect),
                        Qt::AlignCenter, isEnabled(cell) ? QIcon::Normal : QIcon::Disabled);
    } else {
        TableDelegate::drawContent(painter, cell, column);
    }
}

int ApplicationsTableDelegate::contentWidth(const QStyleOptionViewItem& cell, int column) const {
    return column == Model::IconColumn ? cell.decorationSize.width()
                                       : TableDelegate::contentWidth(cell, column);
}

void ApplicationsTableDelegate::initStyleOption(QStyleOptionViewItem* option,
                                                const QModelIndex& index) const {
    TableDelegate::initStyleOption(option, index);
    if (index.column() == Model::PathColumn) {
        option->textElideMode = Qt::ElideMiddle;
    }
    if (index.row() == Model::TotalsRow && !isSecondary(index.column())) {
        option->font.setWeight(QFont::DemiBold);
        option->fontMetrics = QFontMetrics(option->font);
    }
}
