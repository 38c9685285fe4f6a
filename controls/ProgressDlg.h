// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QPointer>
#include <QString>

/**
 * The dialog that keeps the user from the main window while something must be waited for. It exists as a window only
 * while it runs. The tray is not kept from anybody, and whoever quits the program, there or in the session, ends the
 * dialog. Main thread.
 */
class ProgressDlg {
  public:
    /** The program's one; never null, not owned by the caller. */
    static ProgressDlg* sharedProgressDlg();

    ProgressDlg() = default;
    ~ProgressDlg();

    ProgressDlg(const ProgressDlg&) = delete;
    ProgressDlg& operator=(const ProgressDlg&) = delete;

    /** These four also change a dialog that runs. */
    void setTitle(const QString& title);
    void setText(const QString& text);

    /** Whether Escape and the window's close button end the dialog; at first they do. */
    void setCancelAllowed(bool isAllowed);

    /** Whether the bar only says that work goes on, and not how far it is; at first it does. */
    void setIndeterminate(bool isIndeterminate);

    /** Shows the dialog and returns when it has ended; events are handled meanwhile. At once if it runs already. */
    void runModal();

    /** Closes the dialog and lets `runModal` return; nothing if it does not run. */
    void end();

  private:
    class Panel;

    bool isRunning() const;
    void update();

    QString m_Title;
    QString m_Text;
    bool m_IsCancelAllowed = true;
    bool m_IsIndeterminate = true;
    QPointer<Panel> m_Panel;  ///< the last one, until its `runModal` has returned
};
