// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/charts/ConnectionsTableDelegate.h"

#include <QPainter>

#include "ui/charts/ConnectionsTableModel.h"

namespace {

using Model = ConnectionsTableModel;

constexpr qreal arrowLength = 11;  // pixels
constexpr qreal arrowHead = 3.5;
constexpr int arrowRoom = 18;  // with the gap to the word

/** From the left end to the right one; drawn and not written, since few interface fonts have arrows. */
void drawArrow(QPainter& painter, const QRect& room, bool hasLeftHead, bool hasRightHead) {
    const QPointF right(room.left() + arrowLength, room.center().y() + 0.5);
    const QPointF left(room.left(), right.y());
    const auto drawHead = [&](const QPointF& tip, qreal back) {
        painter.drawLine(tip, tip + QPointF(back, -arrowHead));
        painter.drawLine(tip, tip + QPointF(back, arrowHead));
    };
    painter.setPen(QPen(painter.pen().color(), 1.3, Qt::SolidLine, Qt::RoundCap));
    painter.drawLine(left, right);
    if (hasLeftHead) {
        drawHead(left, arrowHead);
    }
    if (hasRightHead) {
        drawHead(right, -arrowHead);
    }
}

}  // namespace

bool ConnectionsTableDelegate::isNumber(int column) const {
    return column == Model::NumberColumn || column == Model::ReceivedColumn || column == Model::SentColumn;
}

/** When it began, what it moved and whom it went to come first. */
bool ConnectionsTableDelegate::isSecondary(int column) const {
    return column == Model::NumberColumn || column == Model::EndColumn || column == Model::LocalAddressColumn;
}

/** Inwards to the left, outwards to the right, as far as it is known. */
void ConnectionsTableDelegate::drawContent(QPainter& painter, const QStyleOptionViewItem& cell,
                                           int column) const {
    if (column != Model::DirectionColumn || cell.text.isEmpty()) {
        TableDelegate::drawContent(painter, cell, column);
        return;
    }
    const QRect room = textRect(cell);
    drawText(painter, cell, room.adjusted(arrowRoom, 0, 0, 0));
    painter.setClipRect(room);
    drawArrow(painter, room, cell.text != QLatin1String("Output"), cell.text != QLatin1String("Input"));
}

int ConnectionsTableDelegate::contentWidth(const QStyleOptionViewItem& cell, int column) const {
    return TableDelegate::contentWidth(cell, column) + (column == Model::DirectionColumn ? arrowRoom : 0);
}

/** A date that has no room is told shorter: what would be cut off is the time of day. */
void ConnectionsTableDelegate::initStyleOption(QStyleOptionViewItem* option, const QModelIndex& index) const {
    TableDelegate::initStyleOption(option, index);
    if (option->rect.isValid() && contentWidth(*option, index.column()) > textRect(*option).width()) {
        const QString shorter = index.data(Model::ShortTextRole).toString();
        option->text = shorter.isEmpty() ? option->text : shorter;
    }
}
