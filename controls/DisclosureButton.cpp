// SPDX-License-Identifier: GPL-3.0-or-later
#include "controls/DisclosureButton.h"

#include <QPainter>
#include <QStyleOptionToolButton>

namespace {

constexpr QSize buttonSize(24, 24);
constexpr qreal triangleWidth = 5;
constexpr qreal triangleHeight = 9;

}  // namespace

DisclosureButton::DisclosureButton(QWidget* parent) : QAbstractButton(parent) {
    setCheckable(true);
    setFocusPolicy(Qt::StrongFocus);
    setAttribute(Qt::WA_Hover);
}

QSize DisclosureButton::sizeHint() const {
    return buttonSize;
}

void DisclosureButton::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    if (underMouse() || hasFocus()) {
        painter.setPen(hasFocus() ? QPen(palette().color(QPalette::Highlight), 1) : QPen(Qt::NoPen));
        painter.setBrush(isDown() ? palette().mid() : palette().midlight());
        painter.drawRoundedRect(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5), 4, 4);
    }
    const qreal way = isChecked() ? triangleWidth / 2 : -triangleWidth / 2;
    const QPointF center = QRectF(rect()).center();
    const QPointF points[] = {center + QPointF(-way, -triangleHeight / 2), center + QPointF(way, 0),
                              center + QPointF(-way, triangleHeight / 2)};
    painter.setPen(Qt::NoPen);
    painter.setBrush(
        palette().color(isEnabled() ? QPalette::Active : QPalette::Disabled, QPalette::ButtonText));
    painter.drawConvexPolygon(points, 3);
}
