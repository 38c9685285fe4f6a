// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/preferences/NoticeStrip.h"

#include <QPainterPath>
#include <QStyle>
#include <QVBoxLayout>

#include "controls/ElidedLabel.h"
#include "platform/style/Brush.h"
#include "platform/style/InterfacePalette.h"

namespace {

const QColor amber(0xf0b020);
const QColor ink(0x2a2210);
constexpr double groundPart = 0.16;  // of amber in the window's colour
constexpr double outlinePart = 0.5;
constexpr int margin = 12;
constexpr int signSize = 24;

/** An exclamation mark in a triangle, as themes draw it, but not in each theme in a size and colour for this place. */
void drawSign(QPainter& painter, const QRectF& room) {
    constexpr qreal corner = 4;
    const QRectF inner = room.adjusted(corner / 2, corner / 2, -corner / 2, -corner / 2);
    QPainterPath triangle(QPointF(inner.center().x(), inner.top() + 1));
    triangle.lineTo(inner.right(), inner.bottom() - 1);
    triangle.lineTo(inner.left(), inner.bottom() - 1);
    triangle.closeSubpath();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(amber, corner, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter.setBrush(amber);
    painter.drawPath(triangle);
    painter.setPen(Qt::NoPen);
    painter.setBrush(ink);
    const qreal middle = room.center().x();
    painter.drawRoundedRect(QRectF(middle - 1.25, room.top() + 8, 2.5, 7), 1.25, 1.25);
    painter.drawEllipse(QPointF(middle, room.bottom() - 5.5), 1.5, 1.5);
}

}  // namespace

NoticeStrip::NoticeStrip(QWidget* parent)
    : QWidget(parent), m_Sentence(new ElidedLabel(this)), m_Subject(new ElidedLabel(this)) {
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(margin + signSize + margin, 8, margin, 8);
    layout->setSpacing(2);
    layout->addWidget(m_Sentence);
    layout->addWidget(m_Subject);
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
}

void NoticeStrip::setText(const QString& sentence, const QString& subject) {
    m_Sentence->setText(sentence);
    m_Subject->setText(subject);
}

void NoticeStrip::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    const QColor window = palette().color(QPalette::Window);
    Brush(painter).panel(rect(), InterfacePalette::mix(window, amber, groundPart),
                         InterfacePalette::mix(window, amber, outlinePart));
    const QRect sign(margin, (height() - signSize) / 2, signSize, signSize);
    drawSign(painter, QStyle::visualRect(layoutDirection(), rect(), sign));
}
