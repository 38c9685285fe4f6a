// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/applications/TableDelegate.h"

#include <QAbstractItemView>
#include <QHelpEvent>
#include <QPainter>
#include <QToolTip>
#include <QtMath>

#include "ui/applications/PlainText.h"

namespace {

/** As the style chooses it for the ground: a table without the keyboard is drawn like an inactive one. */
QPalette::ColorGroup colorGroup(const QStyleOptionViewItem& cell) {
    if ((cell.state & QStyle::State_Enabled) == 0) {
        return QPalette::Disabled;
    }
    return (cell.state & QStyle::State_Active) != 0 ? QPalette::Active : QPalette::Inactive;
}

/** Several lines stay as they are, a single one may be broken: it can be a path of any length. */
QString plainToolTip(const QString& text) {
    return text.contains('\n') ? "<p style='white-space:pre'>" + text.toHtmlEscaped() + "</p>"
                               : PlainText::toolTip(text);
}

}  // namespace

TableDelegate::TableDelegate(const QFont& font, QObject* parent)
    : QStyledItemDelegate(parent), m_Digits(font) {}

void TableDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option,
                          const QModelIndex& index) const {
    QStyleOptionViewItem cell(option);
    initStyleOption(&cell, index);
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);
    cell.widget->style()->drawPrimitive(QStyle::PE_PanelItemViewItem, &cell, painter, cell.widget);
    drawBehind(*painter, cell, index);
    painter->setFont(cell.font);
    painter->setPen(textColor(cell, index.column()));
    drawContent(*painter, cell, index.column());
    painter->restore();
}

QSize TableDelegate::sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const {
    QStyleOptionViewItem cell(option);
    initStyleOption(&cell, index);
    return {contentWidth(cell, index.column()) + 2 * margin, cell.fontMetrics.height()};
}

/** As plain text: names and paths are not ours, and a tooltip would take them for markup. */
bool TableDelegate::helpEvent(QHelpEvent* event, QAbstractItemView* view, const QStyleOptionViewItem& option,
                              const QModelIndex& index) {
    if (event->type() != QEvent::ToolTip) {
        return QStyledItemDelegate::helpEvent(event, view, option, index);
    }
    QStyleOptionViewItem cell(option);
    initStyleOption(&cell, index);
    const QString all = index.data(Qt::ToolTipRole).toString();
    const bool isComplete = all == cell.text && contentWidth(cell, index.column()) <= textRect(cell).width();
    const QString text = isComplete || all.isEmpty() ? QString() : plainToolTip(all);
    QToolTip::showText(event->globalPos(), text, view, cell.rect);
    return true;
}

bool TableDelegate::isEnabled(const QStyleOptionViewItem& cell) {
    return (cell.state & QStyle::State_Enabled) != 0;
}

bool TableDelegate::isSelected(const QStyleOptionViewItem& cell) {
    return (cell.state & QStyle::State_Selected) != 0;
}

QRect TableDelegate::textRect(const QStyleOptionViewItem& cell) {
    return cell.rect.adjusted(margin, 0, -margin, 0);
}

QColor TableDelegate::textColor(const QStyleOptionViewItem& cell, int column) const {
    if (isSelected(cell)) {
        return cell.palette.color(colorGroup(cell), QPalette::HighlightedText);
    }
    return cell.palette.color(colorGroup(cell),
                              isSecondary(column) ? QPalette::PlaceholderText : QPalette::Text);
}

void TableDelegate::drawBehind(QPainter& /*painter*/, const QStyleOptionViewItem& /*cell*/,
                               const QModelIndex& /*index*/) const {}

void TableDelegate::drawContent(QPainter& painter, const QStyleOptionViewItem& cell, int column) const {
    if (isNumber(column)) {
        painter.setClipRect(cell.rect);
        m_Digits.draw(painter, textRect(cell), cell.text);
    } else {
        drawText(painter, cell, textRect(cell));
    }
}

int TableDelegate::contentWidth(const QStyleOptionViewItem& cell, int column) const {
    return isNumber(column) ? qCeil(m_Digits.width(cell.text))
                            : cell.fontMetrics.horizontalAdvance(cell.text);
}

void TableDelegate::initStyleOption(QStyleOptionViewItem* option, const QModelIndex& index) const {
    QStyledItemDelegate::initStyleOption(option, index);
    option->state &= ~(QStyle::State_HasFocus | QStyle::State_MouseOver);
    option->textElideMode = Qt::ElideRight;
}

void TableDelegate::drawText(QPainter& painter, const QStyleOptionViewItem& cell, const QRect& room) {
    painter.drawText(room, static_cast<int>(cell.displayAlignment),
                     cell.fontMetrics.elidedText(cell.text, cell.textElideMode, room.width()));
}
