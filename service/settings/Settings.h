// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <chrono>
#include <optional>
#include <stop_token>
#include <string>
#include <vector>

#include "config/SettingsKeys.h"
#include "service/ledger/RecordingRule.h"

namespace service {

/** What a person wishes the daemon to record and to keep; docs/settings.md tells what each value means. */
struct Settings {
    int months = config::defaultCaptureInterval;  ///< any number: below 1 nothing is dropped
    int mode = config::defaultAllowDenyAppsMode;  ///< any number: but for 1 and 2 everything is recorded
    std::vector<std::string> listed;              ///< paths of executables and bundles

    /**
     * Looks where the symbolic links among the listed paths lead now, so it takes as long as the disk does. A rule
     * of half the list, which nobody should obey, when asked to stop on the way.
     */
    RecordingRule rule(const std::stop_token& stop = {}) const;

    /** How much of the past is kept; nothing: all of it. */
    std::optional<std::chrono::days> retention() const;

    /** "records all applications but 3, keeps 12 months", and which value makes no sense. */
    std::string inWords() const;
};

}  // namespace service
