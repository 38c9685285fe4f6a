// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/style/ButtonPainter.h"

#include <QStyle>

#include "platform/style/Brush.h"
#include "platform/style/InterfacePalette.h"

namespace {

constexpr qreal boxRounding = 4;
constexpr qreal focusGap = 3;  // pixels from the edge of an accented button to its fill: the ring and a gap

bool has(const QStyleOption& option, QStyle::StateFlag flag) {
    return option.state.testFlag(flag);
}

bool isHovered(const QStyleOption& option) {
    return has(option, QStyle::State_MouseOver) && has(option, QStyle::State_Enabled);
}

/** `color` a step darker on light windows, a step lighter on dark ones, the further the more is going on. */
QColor livened(const QColor& color, const QStyleOption& option) {
    const QColor toward = option.palette.color(QPalette::ButtonText);
    if (has(option, QStyle::State_Sunken)) {
        return InterfacePalette::mix(color, toward, 0.14);
    }
    return isHovered(option) ? InterfacePalette::mix(color, toward, 0.06) : color;
}

void drawAccentedButton(QPainter& painter, const QStyleOptionButton& button) {
    Brush brush(painter);
    const QColor fill = livened(button.palette.color(QPalette::Highlight), button);
    if (has(button, QStyle::State_HasFocus)) {
        brush.focusRing(button.rect, button.palette.color(QPalette::Link));
        brush.panel(QRectF(button.rect).adjusted(focusGap, focusGap, -focusGap, -focusGap), fill,
                    Qt::transparent, Brush::radius - 2);
    } else {
        brush.panel(button.rect, fill);
    }
}

/** The fill and the outline of a box or a disc that is ticked or not. */
struct IndicatorColors {
    QColor fill;
    QColor outline;
};

IndicatorColors indicatorColors(const QStyleOption& option, bool isFilled) {
    const QPalette& palette = option.palette;
    if (isFilled) {
        const QColor fill = livened(palette.color(QPalette::Active, QPalette::Highlight), option);
        const bool isEnabled = has(option, QStyle::State_Enabled);
        return {isEnabled ? fill : palette.color(QPalette::Dark), Qt::transparent};
    }
    const QColor outline = palette.color(QPalette::Dark);
    return {livened(palette.color(QPalette::Base), option),
            isHovered(option) ? palette.color(QPalette::Link) : outline};
}

QColor markColor(const QStyleOption& option) {
    return has(option, QStyle::State_Enabled)
               ? option.palette.color(QPalette::Active, QPalette::HighlightedText)
               : option.palette.color(QPalette::Base);
}

QRectF squareIn(const QRect& rect) {
    const int side = qMin(rect.width(), rect.height());
    return QRectF(rect.x() + (rect.width() - side) / 2, rect.y() + (rect.height() - side) / 2, side, side);
}

}  // namespace

bool ButtonPainter::isAccented(const QStyleOptionButton& button) {
    return button.features.testFlag(QStyleOptionButton::DefaultButton) &&
           has(button, QStyle::State_Enabled) && has(button, QStyle::State_Active);
}

void ButtonPainter::drawPushButton(QPainter& painter, const QStyleOptionButton& button) {
    if (isAccented(button)) {
        drawAccentedButton(painter, button);
        return;
    }
    const bool isFlat = button.features.testFlag(QStyleOptionButton::Flat);
    const bool isOn = has(button, QStyle::State_On);
    const QColor ground =
        isOn ? InterfacePalette::tint(button.palette) : button.palette.color(QPalette::Button);
    Brush brush(painter);
    if (!isFlat || isOn || isHovered(button) || has(button, QStyle::State_Sunken)) {
        brush.panel(button.rect, livened(ground, button),
                    isFlat ? QColor(Qt::transparent) : button.palette.color(QPalette::Dark));
    }
    if (has(button, QStyle::State_HasFocus)) {
        brush.focusRing(button.rect, button.palette.color(QPalette::Link));
    }
}

void ButtonPainter::drawToolButton(QPainter& painter, const QStyleOption& option) {
    const bool isOn = has(option, QStyle::State_On);
    const bool isPlain = !has(option, QStyle::State_AutoRaise);
    if (!isOn && !isPlain && !isHovered(option) && !has(option, QStyle::State_Sunken)) {
        return;
    }
    QColor ground = option.palette.color(isPlain ? QPalette::Button : QPalette::Window);
    QColor outline = isPlain ? option.palette.color(QPalette::Dark) : QColor(Qt::transparent);
    if (isOn) {
        ground = InterfacePalette::tint(option.palette);
        outline = option.palette.color(QPalette::Highlight);
    }
    Brush(painter).panel(option.rect, livened(ground, option), outline);
}

void ButtonPainter::drawCheckBox(QPainter& painter, const QStyleOption& option) {
    const bool isHalf = has(option, QStyle::State_NoChange);
    const bool isOn = has(option, QStyle::State_On);
    const IndicatorColors colors = indicatorColors(option, isOn || isHalf);
    const QRectF box = squareIn(option.rect);
    Brush brush(painter);
    brush.panel(box, colors.fill, colors.outline, boxRounding);
    if (isHalf) {
        brush.panel(QRectF(box.left() + 4, box.center().y() - 1, box.width() - 8, 2), markColor(option),
                    Qt::transparent, 1);
    } else if (isOn) {
        brush.check(box, markColor(option));
    }
}

void ButtonPainter::drawRadioButton(QPainter& painter, const QStyleOption& option) {
    const bool isOn = has(option, QStyle::State_On);
    const IndicatorColors colors = indicatorColors(option, isOn);
    const QRectF disc = squareIn(option.rect);
    Brush brush(painter);
    brush.disc(disc, colors.fill, colors.outline);
    if (isOn) {
        const qreal inset = disc.width() * 0.31;
        brush.disc(disc.adjusted(inset, inset, -inset, -inset), markColor(option));
    }
}
