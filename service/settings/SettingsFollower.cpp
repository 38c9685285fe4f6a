// SPDX-License-Identifier: GPL-3.0-or-later
#include "service/settings/SettingsFollower.h"

#include <chrono>
#include <utility>

namespace service {

namespace {

constexpr std::chrono::milliseconds rest{250};  ///< after a reading, lest a client keeps the disk busy

}  // namespace

SettingsFollower::SettingsFollower(SettingsFile& file,
                                   std::function<void(const Settings&, const std::stop_token&)> apply)
    : m_File(file), m_Apply(std::move(apply)), m_Thread([this] { run(); }) {}

SettingsFollower::~SettingsFollower() {
    {
        const std::lock_guard lock(m_Mutex);
        m_Stop.request_stop();
    }
    m_Noted.notify_one();
    m_Thread.join();
}

void SettingsFollower::noteChange() {
    {
        const std::lock_guard lock(m_Mutex);
        m_Changed = true;
    }
    m_Noted.notify_one();
}

void SettingsFollower::run() {
    std::unique_lock lock(m_Mutex);
    while (!m_Stop.stop_requested()) {
        m_Noted.wait(lock, [this] { return m_Changed || m_Stop.stop_requested(); });
        if (std::exchange(m_Changed, false)) {
            lock.unlock();
            m_Apply(m_File.read(), m_Stop.get_token());
            lock.lock();
            m_Noted.wait_for(lock, rest, [this] { return m_Stop.stop_requested(); });
        }
    }
}

}  // namespace service
