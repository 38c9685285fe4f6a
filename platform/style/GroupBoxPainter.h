// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QPainter>
#include <QStyle>
#include <QStyleOption>

/** Draws a group of controls without a frame: a bold caption and a hairline from there to the right edge. */
class GroupBoxPainter {
  public:
    static void draw(QPainter& painter, const QStyleOptionGroupBox& group);

    /** The room of the check box, of the caption or of the content below; without a caption, the content has
     * all of it. Left to right. */
    static QRect room(const QStyleOptionGroupBox& group, QStyle::SubControl part);
};
