// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/style/FieldPainter.h"

#include "platform/style/Brush.h"
#include "platform/style/InterfacePalette.h"

namespace {

constexpr qreal spinArrowSize = 6;
constexpr qreal comboArrowSize = 8;

bool has(const QStyleOption& option, QStyle::StateFlag flag) {
    return option.state.testFlag(flag);
}

QColor ground(const QStyleOption& field, QPalette::ColorRole role) {
    const QColor color = field.palette.color(role);
    const bool isLive = has(field, QStyle::State_Enabled) &&
                        (has(field, QStyle::State_MouseOver) || has(field, QStyle::State_Sunken));
    return role == QPalette::Button && isLive
               ? InterfacePalette::mix(color, field.palette.color(QPalette::ButtonText), 0.06)
               : color;
}

void drawPanel(Brush& brush, const QStyleOption& field, QPalette::ColorRole role) {
    brush.panel(field.rect, ground(field, role), field.palette.color(QPalette::Dark));
    if (has(field, QStyle::State_HasFocus) && has(field, QStyle::State_Enabled)) {
        brush.focusRing(field.rect, field.palette.color(QPalette::Link));
    }
}

/** A button that would change nothing steps back; the one under the mouse steps forward. */
void drawSpinArrow(Brush& brush, const QStyleOptionSpinBox& box, const QRect& room,
                   QStyle::SubControl control) {
    const bool isUp = control == QStyle::SC_SpinBoxUp;
    const auto enabling = isUp ? QAbstractSpinBox::StepUpEnabled : QAbstractSpinBox::StepDownEnabled;
    const bool isEnabled = box.stepEnabled.testFlag(enabling) && has(box, QStyle::State_Enabled);
    const bool isActive = box.activeSubControls.testFlag(control);
    QColor color = box.palette.color(isActive ? QPalette::Text : QPalette::PlaceholderText);
    if (!isEnabled) {
        color = box.palette.color(QPalette::Disabled, QPalette::PlaceholderText);
    }
    brush.chevron(QRectF(room).center(), isUp ? Qt::UpArrow : Qt::DownArrow, color, spinArrowSize);
}

}  // namespace

void FieldPainter::drawField(QPainter& painter, const QStyleOption& field) {
    Brush brush(painter);
    drawPanel(brush, field, QPalette::Base);
}

void FieldPainter::drawSpinBox(QPainter& painter, const QStyleOptionSpinBox& box, const QRect& up,
                               const QRect& down) {
    Brush brush(painter);
    if (box.frame) {
        drawPanel(brush, box, QPalette::Base);
    }
    if (box.buttonSymbols != QAbstractSpinBox::NoButtons) {
        drawSpinArrow(brush, box, up, QStyle::SC_SpinBoxUp);
        drawSpinArrow(brush, box, down, QStyle::SC_SpinBoxDown);
    }
}

void FieldPainter::drawComboBox(QPainter& painter, const QStyleOptionComboBox& box, const QRect& arrow) {
    Brush brush(painter);
    if (box.frame) {
        drawPanel(brush, box, box.editable ? QPalette::Base : QPalette::Button);
    }
    brush.chevron(QRectF(arrow).center(), Qt::DownArrow, box.palette.color(QPalette::PlaceholderText),
                  comboArrowSize);
}
