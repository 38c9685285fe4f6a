// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QPainter>
#include <QStyleOptionMenuItem>

/**
 * Draws menus and the menu bar. A menu has four columns: check marks, icons, texts, shortcuts; the first two only where
 * an item needs them.
 */
class MenuPainter {
  public:
    static void drawMenuPanel(QPainter& painter, const QStyleOption& option);
    static void drawItem(QPainter& painter, const QStyleOptionMenuItem& item, int iconSize);
    static void drawBarItem(QPainter& painter, const QStyleOptionMenuItem& item);

    /** The room for `item`, whose text takes `textSize` pixels. */
    static QSize itemSize(const QStyleOptionMenuItem& item, const QSize& textSize);

    /** Likewise for an item of the menu bar. */
    static QSize barItemSize(const QSize& textSize);
};
