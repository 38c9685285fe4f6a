// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QPainter>
#include <QStyleOption>

/** Draws what divides or surrounds: frames, tabs, splitters, tooltips. */
class FramePainter {
  public:
    /** A hairline round a table or another panel; where the keyboard is in it, the focus ring. */
    static void drawFrame(QPainter& painter, const QStyleOption& option);

    static void drawToolTip(QPainter& painter, const QStyleOption& option);

    /** A ring round something inside of a control, such as a check box's text. */
    static void drawFocus(QPainter& painter, const QStyleOption& option);

    static void drawTab(QPainter& painter, const QStyleOptionTab& tab);

    /** The hairline that a row of tabs stands on. */
    static void drawTabBase(QPainter& painter, const QStyleOptionTabBarBase& base);

    /** Likewise, above the pages that the tabs belong to. */
    static void drawTabPane(QPainter& painter, const QStyleOptionTabWidgetFrame& pane);

    static void drawSplitter(QPainter& painter, const QStyleOption& option);

    /** Window-coloured, with a hairline at its bottom. */
    static void drawBar(QPainter& painter, const QStyleOption& option);

    static void drawBarSeparator(QPainter& painter, const QStyleOption& option);
};
