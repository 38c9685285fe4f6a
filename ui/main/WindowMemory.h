// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

class ColumnFitter;
class Drawer;
class QMainWindow;

/**
 * Remembers the main window's place and size, its columns and its drawer from one start to the next, in the user's
 * own settings folder. What cannot be read is as if nothing had been kept. Main thread; what it is made from must
 * outlive it.
 */
class WindowMemory {
  public:
    WindowMemory(QMainWindow& window, ColumnFitter& columns, Drawer& drawer);

    /** To be called before the window is shown. The window never comes out larger than the screen. */
    void restore();

    void save() const;

  private:
    QMainWindow& m_Window;
    ColumnFitter& m_Columns;
    Drawer& m_Drawer;
};
