// SPDX-License-Identifier: GPL-3.0-or-later
#include "service/ledger/RecordingFilter.h"

#include <utility>

namespace service {

RecordingFilter::RecordingFilter(RecordingRule rule) : m_Rule(std::move(rule)) {}

std::optional<Moment> RecordingFilter::recordedSince(const std::string& executablePath) {
    const auto [known, isNew] = m_RecordedSince.try_emplace(executablePath);
    if (isNew && m_Rule.records(executablePath)) {
        known->second = m_RuleSince;
    }
    return known->second;
}

void RecordingFilter::change(RecordingRule rule, Moment now) {
    m_Rule = std::move(rule);
    m_RuleSince = now;
    for (auto& [path, since] : m_RecordedSince) {
        since = m_Rule.records(path) ? std::optional(since.value_or(now)) : std::nullopt;
    }
}

}  // namespace service
