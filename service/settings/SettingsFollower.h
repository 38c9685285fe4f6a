// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <condition_variable>
#include <functional>
#include <mutex>
#include <stop_token>
#include <thread>

#include "service/settings/SettingsFile.h"

namespace service {

/**
 * Reads a settings file again when told that it changed, on a thread of its own, because files and what listed
 * paths lead to can be slow. The destructor asks a reading that is under way to stop and ends the thread after it.
 */
class SettingsFollower {
  public:
    /** `file` must outlive the follower and is its own; `apply` is called on the follower's thread, with the request to stop. */
    SettingsFollower(SettingsFile& file, std::function<void(const Settings&, const std::stop_token&)> apply);
    ~SettingsFollower();

    SettingsFollower(const SettingsFollower&) = delete;
    SettingsFollower& operator=(const SettingsFollower&) = delete;

    /** Has the file read soon, once for however many calls until then; any thread. */
    void noteChange();

  private:
    void run();

    SettingsFile& m_File;
    const std::function<void(const Settings&, const std::stop_token&)> m_Apply;

    std::mutex m_Mutex;
    std::condition_variable m_Noted;
    bool m_Changed = false;  ///< guarded by m_Mutex
    std::stop_source m_Stop;

    std::thread m_Thread;  ///< last, because it uses all of the above
};

}  // namespace service
