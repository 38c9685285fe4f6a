// SPDX-License-Identifier: GPL-3.0-or-later
#include "controls/DestructiveButton.h"

#include <QStyleOptionButton>

void DestructiveButton::initStyleOption(QStyleOptionButton* option) const {
    QPushButton::initStyleOption(option);
    for (const QPalette::ColorGroup group : {QPalette::Active, QPalette::Inactive}) {
        option->palette.setColor(group, QPalette::ButtonText,
                                 option->palette.color(group, QPalette::BrightText));
    }
}
