// SPDX-License-Identifier: GPL-3.0-or-later
#include "service/server/Timer.h"

#include <sys/epoll.h>
#include <sys/timerfd.h>

#include <cstdint>
#include <utility>

namespace service {

Timer::Timer(EventLoop& loop, std::function<void()> callback)
    : m_Loop(loop), m_Descriptor(::timerfd_create(CLOCK_MONOTONIC, TFD_NONBLOCK | TFD_CLOEXEC)) {
    m_Watch = loop.watch(m_Descriptor.get(), EPOLLIN,
                         [descriptor = m_Descriptor.get(), callback = std::move(callback)](std::uint32_t) {
                             std::uint64_t expirations = 0;
                             if (::read(descriptor, &expirations, sizeof expirations) == sizeof expirations) {
                                 callback();
                             }
                         });
}

Timer::~Timer() {
    m_Loop.unwatch(m_Watch);
}

void Timer::start(std::chrono::milliseconds interval) {
    const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(interval);
    const std::chrono::nanoseconds rest = interval - seconds;
    const timespec every{.tv_sec = seconds.count(), .tv_nsec = rest.count()};
    const itimerspec setting{.it_interval = every, .it_value = every};
    ::timerfd_settime(m_Descriptor.get(), 0, &setting, nullptr);
}

}  // namespace service
