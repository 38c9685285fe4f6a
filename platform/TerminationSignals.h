// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QSocketNotifier>
#include <memory>

/**
 * Lets SIGTERM, SIGINT and SIGHUP end the event loop, and with it an open dialog, so that everything is given
 * back in order, also what the daemon holds for us. A second signal of the same kind ends the process at once:
 * the main thread may be waiting for a daemon that is gone. One object at a time, on the main thread, while there
 * is an application object.
 */
class TerminationSignals {
  public:
    TerminationSignals();
    ~TerminationSignals();

    TerminationSignals(const TerminationSignals&) = delete;
    TerminationSignals& operator=(const TerminationSignals&) = delete;

  private:
    int m_ReadEnd = -1;
    int m_WriteEnd = -1;
    std::unique_ptr<QSocketNotifier> m_Notifier;
};
