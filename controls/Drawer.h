// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QVariantAnimation>
#include <QWidget>

/**
 * A side panel that slides out of the right edge of its window, and back. It stands last in a horizontal
 * layout without spacing, so that nothing jumps when it comes and goes: a gap to its neighbour is a margin of
 * the content. The content keeps its width while it slides; the neighbour gives way.
 *
 * Begins closed. While closed it is hidden, out of reach of keyboard and screen reader; nobody else shows or
 * hides it. Where the style's animations are switched off it opens and closes at once. Main thread.
 */
class Drawer : public QWidget {
    Q_OBJECT

  public:
    explicit Drawer(QWidget* parent = nullptr);

    /** Takes `content` over, and its width: what it would like to have. Replaces and deletes an earlier one.
     */
    void setContentView(QWidget* content);
    QWidget* contentView() const { return m_Content; }

    /** Open, or on its way to be. */
    bool isOpen() const { return m_IsOpen; }

    /** Slides; a drawer that is on its way turns back where it is. */
    void setOpen(bool isOpen);

    void toggle() { setOpen(!m_IsOpen); }

    /** Without sliding, with the same signals. */
    void setOpenAtOnce(bool isOpen);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

  signals:
    // Each once for each change. One that was turned back is not reported as done, nor is one that its
    // window's end or hiding cut short.
    void willOpen();
    void didOpen();
    void willClose();
    void didClose();

  protected:
    bool event(QEvent* event) override;
    void hideEvent(QHideEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

  private:
    /** False if the drawer need not move: it is there already, or who was told decided otherwise. */
    bool beginChange(bool isOpen);
    void arrive();
    void settle();
    void placeContent();
    int contentWidth() const;

    QWidget* m_Content = nullptr;
    QVariantAnimation m_Slide;  ///< 0 closed, 1 open; backwards to close
    bool m_IsOpen = false;
};
