// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QPainter>
#include <QStyleOptionHeader>

/** Draws a table's header: flat, with a hairline below and a short one between two sections. */
class HeaderPainter {
  public:
    static void drawSection(QPainter& painter, const QStyleOptionHeader& header);
    static void drawEmptyArea(QPainter& painter, const QStyleOption& option);
};
