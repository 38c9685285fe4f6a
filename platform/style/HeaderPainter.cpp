// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/style/HeaderPainter.h"

#include <QStyle>

#include "platform/style/Brush.h"
#include "platform/style/InterfacePalette.h"

namespace {

constexpr int textMargin = 8;  // pixels left and right of the text, as in the cells below
constexpr qreal arrowGap = 8;  // pixels between the text and the arrow
constexpr qreal arrowSize = 7;
constexpr int ruleMargin = 8;  // pixels above and below the rule between two sections

bool isLast(const QStyleOptionHeader& header) {
    return header.position == QStyleOptionHeader::End ||
           header.position == QStyleOptionHeader::OnlyOneSection;
}

void drawGround(Brush& brush, const QStyleOption& option, const QColor& color) {
    const QRectF rect = option.rect;
    brush.panel(rect, color, Qt::transparent, 0);
    brush.horizontalHairline(rect.left(), rect.right(), rect.bottom() - 1,
                             option.palette.color(QPalette::Mid));
}

QColor groundColor(const QStyleOptionHeader& header) {
    const QPalette& palette = header.palette;
    if (header.state.testFlag(QStyle::State_Sunken)) {
        return palette.color(QPalette::Midlight);
    }
    const bool isHovered = header.state.testFlag(QStyle::State_MouseOver);
    return palette.color(isHovered ? QPalette::AlternateBase : QPalette::Base);
}

/** The section that the rows are sorted by stands out. */
QColor textColor(const QStyleOptionHeader& header) {
    const QColor text = header.palette.color(QPalette::Text);
    return header.sortIndicator != QStyleOptionHeader::None
               ? text
               : InterfacePalette::mix(text, header.palette.color(QPalette::Base), 0.2);
}

/** Points up where values ascend: `SortDown` is what Qt calls that order. */
Qt::ArrowType arrowDirection(const QStyleOptionHeader& header) {
    return header.sortIndicator == QStyleOptionHeader::SortDown ? Qt::UpArrow : Qt::DownArrow;
}

/** On the text's free side, so that a header over numbers stays aligned with them. */
QPointF arrowCenter(const QStyleOptionHeader& header, const QRectF& room, qreal textWidth) {
    const qreal away = textWidth + arrowGap + arrowSize / 2;
    const qreal y = room.center().y();
    if (header.textAlignment.testFlag(Qt::AlignHCenter)) {
        return {room.center().x() + away - textWidth / 2, y};
    }
    return {header.textAlignment.testFlag(Qt::AlignRight) ? room.right() - away : room.left() + away, y};
}

void drawLabel(QPainter& painter, const QStyleOptionHeader& header) {
    const QRect room = header.rect.adjusted(textMargin, 0, -textMargin, 0);
    const bool isSorted = header.sortIndicator != QStyleOptionHeader::None;
    const int arrowRoom = isSorted ? static_cast<int>(arrowGap + arrowSize) : 0;
    const QString text = header.fontMetrics.elidedText(header.text, Qt::ElideRight, room.width() - arrowRoom);
    painter.setPen(textColor(header));
    painter.drawText(room, static_cast<int>(header.textAlignment), text);
    if (isSorted) {
        const QPointF center = arrowCenter(header, room, header.fontMetrics.horizontalAdvance(text));
        Brush(painter).chevron(center, arrowDirection(header), textColor(header), arrowSize);
    }
}

}  // namespace

void HeaderPainter::drawSection(QPainter& painter, const QStyleOptionHeader& header) {
    {
        Brush brush(painter);
        const QRectF rect = header.rect;
        drawGround(brush, header, groundColor(header));
        if (!isLast(header)) {
            brush.verticalHairline(rect.right() - 1, rect.top() + ruleMargin, rect.bottom() - ruleMargin,
                                   header.palette.color(QPalette::Mid));
        }
    }
    painter.save();
    drawLabel(painter, header);
    painter.restore();
}

void HeaderPainter::drawEmptyArea(QPainter& painter, const QStyleOption& option) {
    Brush brush(painter);
    drawGround(brush, option, option.palette.color(QPalette::Base));
}
