// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/main/ApplicationsTableDelegate.h"

#include <QAbstractItemView>
#include <QApplication>
#include <QHelpEvent>
#include <QPainter>
#include <QToolTip>
#include <QtMath>

#include "ui/applications/PlainText.h"
#include "ui/main/ApplicationsTableModel.h"

namespace {

using Model = ApplicationsTableModel;

constexpr QRgb receivedColor = 0x2ea043;
constexpr QRgb sentColor = 0xd1453b;
constexpr int barOpacityOnLight = 52;  // of 255
constexpr int barOpacityOnDark = 96;
constexpr QMarginsF barMargins(3, 3, 3, 3);
constexpr qreal barRadius = 2;

bool isEnabled(const QStyleOptionViewItem& cell) {
    return (cell.state & QStyle::State_Enabled) != 0;
}

bool isSelected(const QStyleOptionViewItem& cell) {
    return (cell.state & QStyle::State_Selected) != 0;
}

QRect textRect(const QStyleOptionViewItem& cell) {
    constexpr int margin = ApplicationsTableDelegate::margin;
    return cell.rect.adjusted(margin, 0, -margin, 0);
}

/** Names and bytes come first; the rest steps back. */
bool isSecondary(int column) {
    return column == Model::NumberColumn || column == Model::PathColumn ||
           column == Model::LastActivityColumn;
}

bool isNumber(int column) {
    return column == Model::NumberColumn || column == Model::ReceivedColumn || column == Model::SentColumn;
}

/** As the style chooses it for the ground: a table without the keyboard is drawn like an inactive one. */
QPalette::ColorGroup colorGroup(const QStyleOptionViewItem& cell) {
    if (!isEnabled(cell)) {
        return QPalette::Disabled;
    }
    return (cell.state & QStyle::State_Active) != 0 ? QPalette::Active : QPalette::Inactive;
}

QColor textColor(const QStyleOptionViewItem& cell, int column) {
    if (isSelected(cell)) {
        return cell.palette.color(colorGroup(cell), QPalette::HighlightedText);
    }
    return cell.palette.color(colorGroup(cell),
                              isSecondary(column) ? QPalette::PlaceholderText : QPalette::Text);
}

void drawShare(QPainter& painter, const QStyleOptionViewItem& cell, const QModelIndex& index) {
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

/** A hairline below the totals. */
void drawRule(QPainter& painter, const QStyleOptionViewItem& cell) {
    painter.fillRect(QRect(cell.rect.left(), cell.rect.bottom(), cell.rect.width(), 1), cell.palette.mid());
}

}  // namespace

ApplicationsTableDelegate::ApplicationsTableDelegate(const QFont& font, QObject* parent)
    : QStyledItemDelegate(parent), m_Digits(font) {}

void ApplicationsTableDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option,
                                      const QModelIndex& index) const {
    QStyleOptionViewItem cell(option);
    initStyleOption(&cell, index);
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);
    cell.widget->style()->drawPrimitive(QStyle::PE_PanelItemViewItem, &cell, painter, cell.widget);
    drawShare(*painter, cell, index);
    drawContent(*painter, cell, index.column());
    if (index.row() == Model::TotalsRow) {
        drawRule(*painter, cell);
    }
    painter->restore();
}

void ApplicationsTableDelegate::drawContent(QPainter& painter, const QStyleOptionViewItem& cell,
                                            int column) const {
    const QRect room = textRect(cell);
    painter.setFont(cell.font);
    painter.setPen(textColor(cell, column));
    switch (column) {
        case Model::IconColumn:
            cell.icon.paint(
                &painter,
                QStyle::alignedRect(cell.direction, Qt::AlignCenter, cell.decorationSize, cell.rect),
                Qt::AlignCenter, isEnabled(cell) ? QIcon::Normal : QIcon::Disabled);
            break;
        case Model::NumberColumn:
        case Model::ReceivedColumn:
        case Model::SentColumn:
            painter.setClipRect(cell.rect);
            m_Digits.draw(painter, room, cell.text);
            break;
        default:
            painter.drawText(room, static_cast<int>(cell.displayAlignment),
                             cell.fontMetrics.elidedText(cell.text, cell.textElideMode, room.width()));
    }
}

/** What a double click on the border of a header makes of its column. */
QSize ApplicationsTableDelegate::sizeHint(const QStyleOptionViewItem& option,
                                          const QModelIndex& index) const {
    QStyleOptionViewItem cell(option);
    initStyleOption(&cell, index);
    const int width =
        index.column() == Model::IconColumn ? cell.decorationSize.width() : textWidth(cell, index.column());
    return {width + 2 * margin, cell.fontMetrics.height()};
}

/** As plain text: names and paths are not ours, and a tooltip would take them for markup. */
bool ApplicationsTableDelegate::helpEvent(QHelpEvent* event, QAbstractItemView* view,
                                          const QStyleOptionViewItem& option, const QModelIndex& index) {
    if (event->type() != QEvent::ToolTip) {
        return QStyledItemDelegate::helpEvent(event, view, option, index);
    }
    QStyleOptionViewItem cell(option);
    initStyleOption(&cell, index);
    const QString all = index.data(Qt::ToolTipRole).toString();
    const bool isComplete = all == cell.text && textWidth(cell, index.column()) <= textRect(cell).width();
    const QString text = isComplete || all.isEmpty() ? QString() : PlainText::toolTip(all);
    QToolTip::showText(event->globalPos(), text, view, cell.rect);
    return true;
}

int ApplicationsTableDelegate::textWidth(const QStyleOptionViewItem& cell, int column) const {
    return isNumber(column) ? qCeil(m_Digits.width(cell.text))
                            : cell.fontMetrics.horizontalAdvance(cell.text);
}

void ApplicationsTableDelegate::initStyleOption(QStyleOptionViewItem* option,
                                                const QModelIndex& index) const {
    QStyledItemDelegate::initStyleOption(option, index);
    option->state &= ~(QStyle::State_HasFocus | QStyle::State_MouseOver);  // rows are chosen, not cells
    option->textElideMode = index.column() == Model::PathColumn ? Qt::ElideMiddle : Qt::ElideRight;
    if (index.row() == Model::TotalsRow && !isSecondary(index.column())) {
        option->font.setWeight(QFont::DemiBold);
        option->fontMetrics = QFontMetrics(option->font);
    }
}
