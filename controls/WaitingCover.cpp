// SPDX-License-Identifier: GPL-3.0-or-later
#include "controls/WaitingCover.h"

#include <QPainter>
#include <QStyle>

namespace {

constexpr int fadeDuration = 180;  // milliseconds
constexpr int margin = 24;         // pixels
constexpr int gap = 4;
constexpr float baseOpacity = 0.9F;  // over the window's colour, so that it is no hole in it

}  // namespace

WaitingCover::WaitingCover(QWidget* parent) : QWidget(parent) {
    setAttribute(Qt::WA_TransparentForMouseEvents);
    setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Ignored);
    m_Fade.setStartValue(1.0);
    m_Fade.setEndValue(0.0);
    m_Fade.setDuration(fadeDuration);
    connect(&m_Fade, &QVariantAnimation::valueChanged, this, [this] { update(); });
    connect(&m_Fade, &QVariantAnimation::finished, this, &QWidget::hide);
}

void WaitingCover::cover(const QString& title, const QString& detail) {
    m_Fade.stop();
    m_Title = title;
    m_Detail = detail;
    setAccessibleName(title + ' ' + detail);
    show();
    raise();
}

void WaitingCover::uncover() {
    if (isVisible() && style()->styleHint(QStyle::SH_Widget_Animation_Duration, nullptr, this) > 0) {
        m_Fade.start();
    } else {
        hide();
    }
}

void WaitingCover::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    const bool isFading = m_Fade.state() == QVariantAnimation::Running;
    painter.setOpacity(isFading ? m_Fade.currentValue().toDouble() : 1.0);
    QColor base = palette().color(QPalette::Base);
    base.setAlphaF(baseOpacity);
    painter.fillRect(rect(), palette().color(QPalette::Window));
    painter.fillRect(rect(), base);
    if (!isFading) {  // or it would stand between the lines for a moment
        drawTexts(painter);
    }
}

void WaitingCover::drawTexts(QPainter& painter) const {
    QRect room = rect().adjusted(margin, 0, -margin, 0);
    room.setBottom(room.center().y());
    painter.setPen(palette().color(QPalette::WindowText));
    painter.drawText(room, Qt::AlignHCenter | Qt::AlignBottom, m_Title);
    room.moveTop(room.bottom() + gap);
    QFont smaller = font();
    smaller.setPointSizeF(smaller.pointSizeF() - 1);
    painter.setFont(smaller);
    painter.setPen(palette().color(QPalette::PlaceholderText));
    painter.drawText(room, Qt::AlignHCenter | Qt::AlignTop | Qt::TextWordWrap, m_Detail);
}
