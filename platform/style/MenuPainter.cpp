// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/style/MenuPainter.h"

#include <QIcon>
#include <QStyle>
#include <algorithm>

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

/** One column for both: an item that is checked shows that instead of its icon. */
int markWidth(const QStyleOptionMenuItem& item) {
    return std::max(item.menuHasCheckableItems ? checkColumn : 0, item.maxIconWidth);
}

int markColumn(const QStyleOptionMenuItem& item) {
    return markWidth(item) > 0 ? markWidth(item) + columnGap : 0;
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

void drawMark(QPainter& painter, const QStyleOptionMenuItem& item, const QRect& column, int iconSize) {
    const auto room = [&](int size) {
        return QStyle::alignedRect(item.direction, Qt::AlignCenter, QSize(size, size), column);
    };
    if (item.checkType != QStyleOptionMenuItem::NotCheckable && item.checked) {
        drawCheck(painter, item, room(checkColumn));
    } else if (!item.icon.isNull()) {
        item.icon.paint(&painter, room(iconSize), Qt::AlignCenter,
                        isEnabled(item) ? QIcon::Normal : QIcon::Disabled);
    }
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
    drawMark(painter, item, QRect(room.left(), room.top(), markWidth(item), room.height()), iconSize);
    room.setLeft(room.left() + markColumn(item));
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
    const int width = textSize.width() + markColumn(item) + shortcut + arrow;
    return {width + 2 * (sideMargin + textMargin), qMax(itemHeight, textSize.height())};
}

QSize MenuPainter::barItemSize(const QSize& textSize) {
    return textSize + QSize(2 * barItemMargin, 2 * barItemPadding);
}
