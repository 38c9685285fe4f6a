// SPDX-License-Identifier: GPL-3.0-or-later
#include "service/server/StopSignals.h"

#include <pthread.h>
#include <sys/epoll.h>
#include <sys/signalfd.h>

#include <csignal>
#include <utility>

namespace service {

namespace {

sigset_t stopSignals() {
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGTERM);
    sigaddset(&signals, SIGINT);
    struct sigaction onHangup {};
    ::sigaction(SIGHUP, nullptr, &onHangup);
    if (onHangup.sa_handler != SIG_IGN) {  // nohup's wish that the daemon outlives its terminal
        sigaddset(&signals, SIGHUP);
    }
    return signals;
}

}  // namespace

void StopSignals::block() {
    const sigset_t signals = stopSignals();
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
}

StopSignals::StopSignals(EventLoop& loop, std::function<void()> onSignal) : m_Loop(loop) {
    const sigset_t signals = stopSignals();
    m_Descriptor = FileDescriptor(::signalfd(-1, &signals, SFD_NONBLOCK | SFD_CLOEXEC));
    m_Watch = loop.watch(m_Descriptor.get(), EPOLLIN, [this, onSignal = std::move(onSignal)](std::uint32_t) {
        m_Loop.unwatch(m_Watch);
        onSignal();
    });
}

StopSignals::~StopSignals() {
    m_Loop.unwatch(m_Watch);
}

}  // namespace service
