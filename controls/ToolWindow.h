// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QWidget>

/**
 * A small window of its own with a title. While it is sticky it stays above the windows of all applications; where
 * the window system lets nobody do that, it floats above the one that it was given as parent. Main thread.
 */
class ToolWindow : public QWidget {
    Q_OBJECT

  public:
    explicit ToolWindow(QWidget* parent = nullptr);

    bool isStickied() const { return m_IsStickied; }

    /** Keeps the window where it is, shown or not. */
    void setStickied(bool isStickied);

    void setTitle(const QString& title) { setWindowTitle(title); }

    /** To the front, without taking the keyboard away from who has it. */
    void orderFront();

  signals:
    /** It closes, whoever wanted that; `close` does. Who deletes it then, does so later. */
    void willClose();

  protected:
    void closeEvent(QCloseEvent* event) override;

  private:
    bool m_IsStickied = false;
};
