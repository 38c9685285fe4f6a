// SPDX-License-Identifier: GPL-3.0-or-later
#include "controls/NumberLabel.h"

#include <QPainter>
#include <QtMath>

#include "controls/TabularDigits.h"

NumberLabel::NumberLabel(QWidget* parent) : QLabel(parent) {
    setTextFormat(Qt::PlainText);
    setAlignment(Qt::AlignRight | Qt::AlignVCenter);
}

QSize NumberLabel::sizeHint() const {
    const QMargins edges = contentsMargins();
    const int width =
        qCeil(TabularDigits(font()).width(text())) + 2 * margin() + edges.left() + edges.right();
    return {width, QLabel::sizeHint().height()};
}

QSize NumberLabel::minimumSizeHint() const {
    return {sizeHint().width(), QLabel::minimumSizeHint().height()};
}

void NumberLabel::paintEvent(QPaintEvent* event) {
    QFrame::paintEvent(event);
    QPainter painter(this);
    painter.setPen(palette().color(foregroundRole()));
    const int edge = margin();
    TabularDigits(font()).draw(painter, contentsRect().adjusted(edge, edge, -edge, -edge), text());
}
