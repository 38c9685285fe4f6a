// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QPixmap>
#include <QStackedWidget>
#include <QVariantAnimation>

/**
 * Pages of which one is shown; the change from one to another is a short slide, towards the left to a later page and
 * towards the right to an earlier one. The new page is the current one from the beginning, and takes the keys; what
 * slides is a picture of both, so that a quick second change never ends on a wrong page. Changes at once where the
 * style's animations are switched off, and while the view is hidden. Main thread.
 */
class AnimatedTabView : public QStackedWidget {
    Q_OBJECT

  public:
    enum TransitionType { NoTransition = 0, SlideTransition = 9 };

    explicit AnimatedTabView(QWidget* parent = nullptr);

    /** Anything but NoTransition is the slide, the only one there is. */
    void setTransitionType(int type) { m_TransitionType = type; }

    /** How a transition is done; kept for those who ask, the slide has no options. */
    void setTransitionOptions(int options) { m_TransitionOptions = options; }
    int transitionType() const { return m_TransitionType; }
    int transitionOptions() const { return m_TransitionOptions; }

    /** An index without a page changes nothing. Use these, not `setCurrentIndex`, which does not slide. */
    void selectTabViewItem(int index);
    void selectFirstTabViewItem() { selectTabViewItem(0); }
    void selectLastTabViewItem() { selectTabViewItem(count() - 1); }

    bool isSliding() const { return m_Slide.state() == QVariantAnimation::Running; }

  protected:
    void resizeEvent(QResizeEvent* event) override;
    void hideEvent(QHideEvent* event) override;

  private:
    class Curtain;

    bool isAnimated() const;
    void arrive();

    QVariantAnimation m_Slide;  ///< 0 the former page, 1 the current one
    Curtain* m_Curtain;
    int m_TransitionType = SlideTransition;
    int m_TransitionOptions = 0;
};
