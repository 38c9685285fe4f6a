// SPDX-License-Identifier: GPL-3.0-or-later
#include "service/store/ageing/TrustedPresent.h"

#include <algorithm>

namespace service {

namespace {

using namespace std::chrono;

/** A longer step than this from one written moment to the next is a leap. */
constexpr minutes longestStep{1};

constexpr int distancePerDoubt = 100;
constexpr days longestDoubt{1};

}  // namespace

void TrustedPresent::follow(Moment before, Moment now) {
    const auto credible = [&](seconds distance) {
        return now + std::min<seconds>(distance / distancePerDoubt, longestDoubt);
    };
    if (now < before) {
        m_CredibleFrom = credible(abs(now - m_Moment));  // what made the future doubtful is over
    } else if (now - before > longestStep) {
        if (now >= m_CredibleFrom) {
            m_Moment = before;
        }
        m_CredibleFrom = std::max(m_CredibleFrom, credible(now - before));
    }
    if (now >= m_CredibleFrom || now < m_Moment) {
        m_Moment = now;
    }
}

}  // namespace service
