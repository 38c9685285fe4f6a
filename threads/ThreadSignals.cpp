// SPDX-License-Identifier: GPL-3.0-or-later
#include "threads/ThreadSignals.h"

#include <signal.h>

void blockThreadSignals() {
    sigset_t all;
    sigfillset(&all);
    pthread_sigmask(SIG_BLOCK, &all, nullptr);
}
