// SPDX-License-Identifier: GPL-3.0-or-later
#include "controls/CaptionLabel.h"

CaptionLabel::CaptionLabel(QWidget* parent) : QLabel(parent) {
    QFont smaller = font();
    smaller.setPointSizeF(smaller.pointSizeF() - 1);
    setFont(smaller);
    setForegroundRole(QPalette::PlaceholderText);
    setTextFormat(Qt::PlainText);
}
