// SPDX-License-Identifier: GPL-3.0-or-later
#include "service/server/EventLoop.h"

#include <sys/epoll.h>
#include <sys/eventfd.h>

#include <array>
#include <utility>

namespace service {

EventLoop::EventLoop()
    : m_Epoll(::epoll_create1(EPOLL_CLOEXEC)), m_Wake(::eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC)) {
    watch(m_Wake.get(), EPOLLIN, [this](std::uint32_t) { runPosted(); });
}

EventLoop::WatchId EventLoop::watch(int descriptor, std::uint32_t events, Handler handler) {
    const WatchId id = m_NextId++;
    epoll_event event{};
    event.events = events;
    event.data.u64 = id;
    if (::epoll_ctl(m_Epoll.get(), EPOLL_CTL_ADD, descriptor, &event) != 0) {
        return noWatch;
    }
    m_Watches.emplace(id, Watch{descriptor, events, std::make_shared<Handler>(std::move(handler))});
    return id;
}

void EventLoop::setEvents(WatchId id, std::uint32_t events) {
    const auto found = m_Watches.find(id);
    if (found == m_Watches.end() || found->second.events == events) {
        return;
    }
    found->second.events = events;
    epoll_event event{};
    event.events = events;
    event.data.u64 = id;
    ::epoll_ctl(m_Epoll.get(), EPOLL_CTL_MOD, found->second.descriptor, &event);
}

void EventLoop::unwatch(WatchId id) {
    const auto found = m_Watches.find(id);
    if (found == m_Watches.end()) {
        return;
    }
    ::epoll_ctl(m_Epoll.get(), EPOLL_CTL_DEL, found->second.descriptor, nullptr);
    m_Watches.erase(found);
}

void EventLoop::post(std::function<void()> task) {
    {
        const std::lock_guard lock(m_PostedMutex);
        m_Posted.push_back(std::move(task));
    }
    const std::uint64_t one = 1;
    [[maybe_unused]] const auto written = ::write(m_Wake.get(), &one, sizeof one);
}

void EventLoop::run() {
    std::array<epoll_event, 64> ready{};
    while (!m_Stopped) {
        const int count = ::epoll_wait(m_Epoll.get(), ready.data(), static_cast<int>(ready.size()), -1);
        for (int i = 0; i < count && !m_Stopped; ++i) {
            dispatch(ready[i].data.u64, ready[i].events);
        }
    }
}

void EventLoop::dispatch(WatchId id, std::uint32_t events) {
    const auto found = m_Watches.find(id);
    if (found == m_Watches.end()) {
        return;  // removed by a handler that ran before in the same round
    }
    const std::shared_ptr<Handler> handler = found->second.handler;  // outlives a handler that removes itself
    (*handler)(events);
}

void EventLoop::runPosted() {
    std::uint64_t rings = 0;
    [[maybe_unused]] const auto consumed = ::read(m_Wake.get(), &rings, sizeof rings);
    std::vector<std::function<void()>> tasks;
    {
        const std::lock_guard lock(m_PostedMutex);
        tasks.swap(m_Posted);
    }
    for (const std::function<void()>& task : tasks) {
        task();
    }
}

}  // namespace service
