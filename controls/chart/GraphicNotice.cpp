// SPDX-License-Identifier: GPL-3.0-or-later
#include "controls/chart/GraphicNotice.h"

#include <QEvent>
#include <QPainter>
#include <algorithm>

namespace {

// In pixels.
constexpr int sidePadding = 12;
constexpr int padding = 6;
constexpr qreal cornerRadius = 4;

}  // namespace

GraphicNotice::GraphicNotice(QWidget* parent) : QWidget(parent) {
    setAttribute(Qt::WA_TransparentForMouseEvents);
    hide();
}

void GraphicNotice::setText(const QString& text) {
    if (text != m_Text) {
        m_Text = text;
        setAccessibleName(text);
        place();
        setVisible(!text.isEmpty());
        raise();
    }
}

void GraphicNotice::place() {
    const QSize wanted = QFontMetrics(font()).size(0, m_Text) + QSize(2 * sidePadding, 2 * padding);
    QRect box({}, wanted.boundedTo(parentWidget()->size()));
    box.moveCenter(parentWidget()->rect().center());
    setGeometry(box);
    update();
}

void GraphicNotice::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    QColor fill = palette().color(QPalette::Window);
    fill.setAlpha(235);
    QColor edge = palette().color(QPalette::Text);
    edge.setAlpha(36);
    painter.setBrush(fill);
    painter.setPen(QPen(edge, 1));
    painter.drawRoundedRect(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5), cornerRadius, cornerRadius);
    painter.setPen(palette().color(QPalette::WindowText));
    const QRect room = rect().adjusted(padding, 0, -padding, 0);
    painter.drawText(room, Qt::AlignCenter, fontMetrics().elidedText(m_Text, Qt::ElideRight, room.width()));
}

void GraphicNotice::changeEvent(QEvent* event) {
    QWidget::changeEvent(event);
    if (event->type() == QEvent::FontChange) {
        place();
    }
}
