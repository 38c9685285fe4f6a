// SPDX-License-Identifier: GPL-3.0-or-later
#include "controls/AnimatedTabView.h"

#include <QPainter>
#include <QStyle>

namespace {

constexpr int slideDuration = 180;  // milliseconds

}  // namespace

/** Covers the pages while they slide, and shows pictures of them. */
class AnimatedTabView::Curtain : public QWidget {
  public:
    explicit Curtain(QWidget* parent) : QWidget(parent) {
        setAttribute(Qt::WA_TransparentForMouseEvents);
        hide();
    }

    void begin(const QPixmap& former, const QPixmap& next, bool isForward) {
        m_Former = former;
        m_Next = next;
        m_IsForward = isForward;
        setGeometry(parentWidget()->rect());
        show();
        raise();
    }

    void end() {
        hide();
        m_Former = {};
        m_Next = {};
    }

    void moveTo(double part) {
        m_Part = part;
        update();
    }

  protected:
    void paintEvent(QPaintEvent* /*event*/) override {
        QPainter painter(this);
        painter.fillRect(rect(), palette().window());
        const int moved = qRound(width() * m_Part);
        painter.drawPixmap(m_IsForward ? -moved : moved, 0, m_Former);
        painter.drawPixmap(m_IsForward ? width() - moved : moved - width(), 0, m_Next);
    }

  private:
    QPixmap m_Former;
    QPixmap m_Next;
    double m_Part = 0;
    bool m_IsForward = true;
};

AnimatedTabView::AnimatedTabView(QWidget* parent) : QStackedWidget(parent), m_Curtain(new Curtain(this)) {
    m_Slide.setStartValue(0.0);
    m_Slide.setEndValue(1.0);
    m_Slide.setDuration(slideDuration);
    m_Slide.setEasingCurve(QEasingCurve::InOutCubic);
    connect(&m_Slide, &QVariantAnimation::valueChanged, this,
            [this](const QVariant& part) { m_Curtain->moveTo(part.toDouble()); });
    connect(&m_Slide, &QVariantAnimation::finished, this, &AnimatedTabView::arrive);
}

void AnimatedTabView::selectTabViewItem(int index) {
    if (index < 0 || index >= count() || index == currentIndex()) {
        return;
    }
    arrive();  // from a slide that is still on its way
    if (!isAnimated()) {
        setCurrentIndex(index);
        return;
    }
    const bool isForward = index > currentIndex();
    const QPixmap former = currentWidget()->grab();
    setUpdatesEnabled(false);
    setCurrentIndex(index);
    const QPixmap next = currentWidget()->grab();
    m_Curtain->begin(former, next, isForward);
    m_Curtain->moveTo(0);
    setUpdatesEnabled(true);
    m_Slide.start();
}

bool AnimatedTabView::isAnimated() const {
    return m_TransitionType != NoTransition && isVisible() && currentWidget() != nullptr &&
           style()->styleHint(QStyle::SH_Widget_Animation_Duration, nullptr, this) > 0;
}

void AnimatedTabView::arrive() {
    m_Slide.stop();
    m_Curtain->end();
}

void AnimatedTabView::resizeEvent(QResizeEvent* event) {
    QStackedWidget::resizeEvent(event);
    arrive();  // the pictures are of another size
}

void AnimatedTabView::hideEvent(QHideEvent* event) {
    QStackedWidget::hideEvent(event);
    arrive();
}
