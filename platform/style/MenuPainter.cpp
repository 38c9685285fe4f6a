// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/style/MenuPainter.h"

#include <QIcon>
#include <QStyle>

#include "platform/style/Brush.h"
#include "platform/style/InterfacePalette.h"

namespace {

constexpr int itemHeight = 28;
constexpr int separatorHeight = 9;
constexpr int sideMargin = 4;    // pixels from the menu's edge to what lights up under the mouse
constexpr int textMargin = 10;   // pixels from there to the text
constexpr int columnGap = 8;     // pixels between two columns
constexpr int checkColumn = 16;  // pixels
constexpr int shortcutGap = 24;  // pixels between the longest text and the shortcuts
constexpr int arrowColumn = 16;  // pixels, right of the shortcuts
constexpr int barItemMargin = 9;
constexpr int barItemPadding = 5;

bool isEnabled(const QStyleOption& option) {
    return option.state.testFlag(QStyle::State_Enabled);
}

/** What a column of this width takes with the gap behind it; one that no item needs takes nothing. */
int withGap(int width) {
    return width > 0 ? width + columnGap : 0;
}

int checkWidth(const QStyleOptionMenuItem& item) {
    return item.menuHasCheckableItems ? checkColumn : 0;
}

int marksWidth(const QStyleOptionMenuItem& item) {
    return withGap(checkWidth(item)) + withGap(item.maxIconWidth);
}

void drawSeparator(QPainter& painter, const QStyleOptionMenuItem& item) {
    const QRectF rect = item.rect;
    Brush(painter).horizontalHairline(
        rect.left() + textMargin, rect.right() - textMargin, rect.center().y(),
        InterfacePalette::mix(item.palette.color(QPalette::Base), item.palette.color(QPalette::Text), 0.2));
}

void drawCheck(QPainter& painter, const QStyleOptionMenuItem& item, const QRectF& room) {
    const QColor color = item.palette.color(QPalette::Text);
    Brush brush(painter);
    if (item.checkType == QStyleOptionMenuItem::Exclusive) {
        brush.disc(QRectF(room.center() - QPointF(3, 3), QSizeF(6, 6)), color);
    } else {
        brush.check(room, color);
    }
}

/** From the left edge of `room` on. */
void drawMarks(QPainter& painter, const QStyleOptionMenuItem& item, const QRect& room, int iconSize) {
    const auto centred = [&](int left, int width, int size) {
        return QStyle::alignedRect(item.direction, Qt::AlignCenter, QSize(size, size),
                                   QRect(left, room.top(), width, room.height()));
    };
    if (item.checkType != QStyleOptionMenuItem::NotCheckable && item.checked) {
        drawCheck(painter, item, centred(room.left(), checkWidth(item), checkColumn));
    }
    item.icon.paint(&painter, centred(room.left() + withGap(checkWidth(item)), item.maxIconWidth, iconSize),
                    Qt::AlignCenter, isEnabled(item) ? QIcon::Normal : QIcon::Disabled);
}

/** Qt hands the text and the shortcut over with a tab between them. */
void drawTexts(QPainter& painter, const QStyleOptionMenuItem& item, const QRect& room) {
    const int flags = Qt::AlignVCenter | Qt::TextShowMnemonic | Qt::TextDontClip | Qt::TextSingleLine;
    const QString text = item.text.section('\t', 0, 0);
    const QString shortcut = item.text.section('\t', 1);
    painter.setFont(item.font);
    painter.setPen(item.palette.color(QPalette::Text));
    painter.drawText(room, flags | Qt::AlignLeft, text);
    painter.setPen(item.palette.color(isEnabled(item) && item.state.testFlag(QStyle::State_Selected)
                                          ? QPalette::Text
                                          : QPalette::PlaceholderText));
    painter.drawText(room, flags | Qt::AlignRight, shortcut);
}

void drawColumns(QPainter& painter, const QStyleOptionMenuItem& item, int iconSize) {
    QRect room = item.rect.adjusted(textMargin + sideMargin, 0, -textMargin - sideMargin, 0);
    drawMarks(painter, item, room, iconSize);
    room.setLeft(room.left() + marksWidth(item));
    if (item.menuItemType == QStyleOptionMenuItem::SubMenu) {
        Brush(painter).chevron(QPointF(room.right() - 3, QRectF(room).center().y()), Qt::RightArrow,
                               item.palette.color(QPalette::PlaceholderText), 7);
    }
    drawTexts(painter, item, room);
}

}  // namespace

void MenuPainter::drawMenuPanel(QPainter& painter, const QStyleOption& option) {
    Brush(painter).panel(option.rect, option.palette.color(QPalette::Base),
                         InterfacePalette::mix(option.palette.color(QPalette::Base),
                                               option.palette.color(QPalette::Text), 0.3),
                         0);
}

void MenuPainter::drawItem(QPainter& painter, const QStyleOptionMenuItem& item, int iconSize) {
    if (item.menuItemType == QStyleOptionMenuItem::Separator) {
        drawSeparator(painter, item);
        return;
    }
    if (item.state.testFlag(QStyle::State_Selected) && isEnabled(item)) {
        Brush(painter).panel(item.rect.adjusted(sideMargin, 0, -sideMargin, 0),
                             InterfacePalette::tint(item.palette));
    }
    painter.save();
    drawColumns(painter, item, iconSize);
    painter.restore();
}

void MenuPainter::drawBarItem(QPainter& painter, const QStyleOptionMenuItem& item) {
    const bool isLit = item.state.testFlag(QStyle::State_Selected) && isEnabled(item);
    const bool isOpen = isLit && item.state.testFlag(QStyle::State_Sunken);
    const QColor window = item.palette.color(QPalette::Window);
    const QColor text = item.palette.color(QPalette::WindowText);
    painter.fillRect(item.rect, window);
    if (isLit) {
        Brush(painter).panel(item.rect.adjusted(1, 2, -1, -2),
                             InterfacePalette::mix(window, text, isOpen ? 0.14 : 0.08));
    }
    painter.save();
    painter.setPen(text);
    painter.drawText(item.rect, Qt::AlignCenter | Qt::TextShowMnemonic | Qt::TextSingleLine, item.text);
    painter.restore();
}

QSize MenuPainter::itemSize(const QStyleOptionMenuItem& item, const QSize& textSize) {
    if (item.menuItemType == QStyleOptionMenuItem::Separator) {
        return {2 * (sideMargin + textMargin), separatorHeight};
    }
    const int shortcut = item.text.contains('\t') || item.reservedShortcutWidth > 0 ? shortcutGap : 0;
    const int arrow = item.menuItemType == QStyleOptionMenuItem::SubMenu ? arrowColumn : 0;
    const int width = textSize.width() + marksWidth(item) + shortcut + arrow;
    return {width + 2 * (sideMargin + textMargin), qMax(itemHeight, textSize.height())};
}

QSize MenuPainter::barItemSize(const QSize& textSize) {
    return textSize + QSize(2 * barItemMargin, 2 * barItemPadding);
}
