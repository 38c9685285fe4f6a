// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/TerminationSignals.h"

#include <fcntl.h>
#include <signal.h>
#include <unistd.h>

#include <QCoreApplication>
#include <atomic>
#include <cerrno>

namespace {

constexpr int handledSignals[] = {SIGTERM, SIGINT, SIGHUP};

std::atomic<int> sWriteEnd{-1};  // a handler can only reach a static

void wakeMainLoop(int) {
    const int savedErrno = errno;
    const char byte = 0;
    [[maybe_unused]] const ssize_t written = write(sWriteEnd, &byte, 1);
    errno = savedErrno;
}

void handle(void (*handler)(int)) {
    struct sigaction action = {};
    action.sa_handler = handler;
    action.sa_flags = static_cast<int>(SA_RESTART | SA_RESETHAND);
    for (const int signal : handledSignals) {
        sigaction(signal, &action, nullptr);
    }
}

}  // namespace

TerminationSignals::TerminationSignals() {
    int ends[2];
    if (pipe(ends) != 0) {
        return;  // the signals keep their default: they end the process at once
    }
    m_ReadEnd = ends[0];
    m_WriteEnd = ends[1];
    for (const int end : ends) {
        fcntl(end, F_SETFD, FD_CLOEXEC);
        fcntl(end, F_SETFL, O_NONBLOCK);
    }
    m_Notifier = std::make_unique<QSocketNotifier>(m_ReadEnd, QSocketNotifier::Read);
    QObject::connect(m_Notifier.get(), &QSocketNotifier::activated, m_Notifier.get(), [this] {
        m_Notifier->setEnabled(false);
        QCoreApplication::exit();  // unlike quit(), also ends a dialog that runs before the main loop
    });
    sWriteEnd = m_WriteEnd;
    handle(wakeMainLoop);
}

TerminationSignals::~TerminationSignals() {
    if (m_Notifier == nullptr) {
        return;
    }
    handle(SIG_DFL);
    m_Notifier.reset();
    close(m_WriteEnd);
    close(m_ReadEnd);
}
