// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QPainter>
#include <QStyleOptionButton>

/** Draws what is pressed or ticked: push buttons, tool buttons, check boxes and radio buttons. */
class ButtonPainter {
  public:
    /** The accent fills a default button; its label is then to be in `HighlightedText`. */
    static bool isAccented(const QStyleOptionButton& button);

    static void drawPushButton(QPainter& painter, const QStyleOptionButton& button);

    /** Nothing at rest where `option` is raised by itself, as in a tool bar. */
    static void drawToolButton(QPainter& painter, const QStyleOption& option);

    static void drawCheckBox(QPainter& painter, const QStyleOption& option);
    static void drawRadioButton(QPainter& painter, const QStyleOption& option);
};
