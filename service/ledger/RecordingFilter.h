// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <optional>
#include <string>
#include <unordered_map>

#include "service/ledger/RecordingRule.h"
#include "service/traffic/Moment.h"

namespace service {

/**
 * Applies a rule to applications and remembers the outcome, so that asking costs one look-up. One thread at a
 * time.
 */
class RecordingFilter {
  public:
    explicit RecordingFilter(RecordingRule rule);

    /** Since when an application is recorded without a break, as far as is known; nothing when it is not. */
    std::optional<Moment> recordedSince(const std::string& executablePath);

    /** `rule` holds from `now` on. */
    void change(RecordingRule rule, Moment now);

  private:
    RecordingRule m_Rule;
    Moment m_RuleSince = Moment::min();
    std::unordered_map<std::string, std::optional<Moment>> m_RecordedSince;  ///< by executable
};

}  // namespace service
