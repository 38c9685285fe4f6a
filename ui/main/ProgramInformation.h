// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QPointer>
#include <QString>

class QMessageBox;
class QWidget;

/** What the program tells of itself: its home page, in the user's browser, and a box with its version. Main thread. */
class ProgramInformation {
  public:
    /** `window` has the box, and outlives this object. */
    explicit ProgramInformation(QWidget& window) : m_Window(window) {}

    /** Opens the page that is installed with the program; where that fails the box says why. */
    void showHomePage();

    void showAbout();

  private:
    void showMessage(const QString& text, const QString& details);

    QWidget& m_Window;
    QPointer<QMessageBox> m_Message;  ///< while it is open
};
