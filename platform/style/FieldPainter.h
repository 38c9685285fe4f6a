// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QPainter>
#include <QStyleOption>

/** Draws what is filled in or chosen from: line edits, spin boxes, date edits and combo boxes. */
class FieldPainter {
  public:
    /** The ground and frame of a field; the frame becomes the focus ring. */
    static void drawField(QPainter& painter, const QStyleOption& field);

    /** `up` and `down` are the rooms of the two buttons. */
    static void drawSpinBox(QPainter& painter, const QStyleOptionSpinBox& box, const QRect& up,
                            const QRect& down);

    /** `arrow` is the room of the arrow. Looks like a button, or like a field where text can be typed. */
    static void drawComboBox(QPainter& painter, const QStyleOptionComboBox& box, const QRect& arrow);
};
