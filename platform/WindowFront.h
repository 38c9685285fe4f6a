// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

class QWidget;

/** Brings windows to the front of the user's desktop. */
class WindowFront {
  public:
    /**
     * Shows `window`, which is a top-level one, above all others and gives it the keyboard, whether it was hidden,
     * minimized or merely covered and whichever program is the active one. It keeps its place and size; a maximized
     * one stays maximized. A sheet or dialog that is open comes with it, and has the keyboard then. The window manager has the last word. Main thread.
     */
    static void orderFrontRegardless(QWidget& window);
};
