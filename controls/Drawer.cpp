// SPDX-License-Identifier: GPL-3.0-or-later
#include "controls/Drawer.h"

#include <QEvent>
#include <QHideEvent>
#include <QStyle>
#include <algorithm>

namespace {

constexpr int slideDuration = 160;  // milliseconds

}  // namespace

Drawer::Drawer(QWidget* parent) : QWidget(parent) {
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Preferred);
    hide();
    m_Slide.setStartValue(0.0);
    m_Slide.setEndValue(1.0);
    m_Slide.setDuration(slideDuration);
    m_Slide.setEasingCurve(QEasingCurve::InOutCubic);
    connect(&m_Slide, &QVariantAnimation::valueChanged, this, &QWidget::updateGeometry);
    connect(&m_Slide, &QVariantAnimation::finished, this, &Drawer::arrive);
}

void Drawer::setContentView(QWidget* content) {
    delete m_Content;
    m_Content = content;
    m_Content->setParent(this);
    m_Content->show();
    placeContent();
    updateGeometry();
}

void Drawer::setOpen(bool isOpen) {
    if (!beginChange(isOpen)) {
        return;
    }
    const bool isAnimated = style()->styleHint(QStyle::SH_Widget_Animation_Duration, nullptr, this) > 0;
    const QWidget* seen = isOpen ? parentWidget() : this;
    if (!isAnimated || seen == nullptr || !seen->isVisible()) {
        arrive();
        return;
    }
    m_Slide.setDirection(isOpen ? QVariantAnimation::Forward : QVariantAnimation::Backward);
    if (m_Slide.state() != QVariantAnimation::Running) {
        m_Slide.start();
    }
    show();  // now that it has no width: showing makes room at once
}

void Drawer::setOpenAtOnce(bool isOpen) {
    if (beginChange(isOpen) || m_Slide.state() == QVariantAnimation::Running) {
        arrive();
    }
}

bool Drawer::beginChange(bool isOpen) {
    if (m_IsOpen == isOpen) {
        return false;
    }
    m_IsOpen = isOpen;
    emit(isOpen ? willOpen() : willClose());
    return m_IsOpen == isOpen;
}

void Drawer::arrive() {
    settle();
    emit(m_IsOpen ? didOpen() : didClose());
}

void Drawer::settle() {
    m_Slide.stop();
    setVisible(m_IsOpen);
    updateGeometry();
}

QSize Drawer::sizeHint() const {
    const bool isSliding = m_Slide.state() == QVariantAnimation::Running;
    const double part = isSliding ? m_Slide.currentValue().toDouble() : (m_IsOpen ? 1.0 : 0.0);
    return {qRound(contentWidth() * part), m_Content != nullptr ? m_Content->sizeHint().height() : 0};
}

QSize Drawer::minimumSizeHint() const {
    return {sizeHint().width(), m_Content != nullptr ? m_Content->minimumSizeHint().height() : 0};
}

bool Drawer::event(QEvent* event) {
    if (event->type() == QEvent::LayoutRequest) {  // the content would like another size
        placeContent();
        updateGeometry();
    }
    return QWidget::event(event);
}

/** A window that goes away takes its drawer to the end of its way, and nobody hears of it. */
void Drawer::hideEvent(QHideEvent* event) {
    QWidget::hideEvent(event);
    if (!event->spontaneous() && m_Slide.state() == QVariantAnimation::Running) {
        settle();
    }
}

void Drawer::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    placeContent();
}

void Drawer::placeContent() {
    if (m_Content != nullptr) {
        m_Content->setGeometry(0, 0, contentWidth(), height());
    }
}

int Drawer::contentWidth() const {
    return m_Content == nullptr ? 0
                                : std::clamp(m_Content->sizeHint().width(), m_Content->minimumWidth(),
                                             m_Content->maximumWidth());
}
