// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/style/GroupBoxPainter.h"

#include <algorithm>

#include "platform/style/Brush.h"
#include "platform/style/ButtonPainter.h"

namespace {

constexpr int boxSize = 16;
constexpr int gap = 8;  // pixels between the check box, the caption and the hairline

/** A bold font would be handed down to what is in the group, so the widget does not have it. */
QFont captionFont(const QStyleOptionGroupBox& group) {
    QFont font = group.styleObject != nullptr && group.styleObject->isWidgetType()
                     ? static_cast<const QWidget*>(group.styleObject)->font()
                     : QFont();
    font.setWeight(QFont::DemiBold);
    return font;
}

bool hasBox(const QStyleOptionGroupBox& group) {
    return group.subControls.testFlag(QStyle::SC_GroupBoxCheckBox);
}

void drawCaption(QPainter& painter, const QStyleOptionGroupBox& group, const QRect& room) {
    painter.save();
    painter.setFont(captionFont(group));
    painter.setPen(group.palette.color(QPalette::WindowText));
    painter.drawText(room, Qt::AlignLeft | Qt::AlignVCenter | Qt::TextShowMnemonic | Qt::TextSingleLine,
                     group.text);
    painter.restore();
    Brush(painter).horizontalHairline(room.right() + gap, group.rect.right() + 1, room.center().y(),
                                      group.palette.color(QPalette::Mid));
}

}  // namespace

void GroupBoxPainter::draw(QPainter& painter, const QStyleOptionGroupBox& group) {
    const auto visible = [&group](QStyle::SubControl part) {
        return QStyle::visualRect(group.direction, group.rect, room(group, part));
    };
    if (!group.text.isEmpty()) {
        drawCaption(painter, group, visible(QStyle::SC_GroupBoxLabel));
    }
    if (hasBox(group)) {
        QStyleOption box(group);
        box.rect = visible(QStyle::SC_GroupBoxCheckBox);
        ButtonPainter::drawCheckBox(painter, box);
    }
}

QRect GroupBoxPainter::room(const QStyleOptionGroupBox& group, QStyle::SubControl part) {
    const QFontMetrics metrics(captionFont(group));
    const int box = hasBox(group) ? boxSize : 0;
    const bool hasCaption = hasBox(group) || !group.text.isEmpty();
    const int height = hasCaption ? std::max(metrics.height(), box) : 0;
    const QPoint corner = group.rect.topLeft();
    switch (part) {
        case QStyle::SC_GroupBoxCheckBox:
            return {corner + QPoint(0, (height - box) / 2), QSize(box, box)};
        case QStyle::SC_GroupBoxLabel:
            return {corner + QPoint(hasBox(group) ? box + gap : 0, 0),
                    QSize(metrics.size(Qt::TextShowMnemonic, group.text).width(), height)};
        case QStyle::SC_GroupBoxContents:
            return group.rect.adjusted(0, height, 0, 0);
        default:
            return group.rect;
    }
}
