// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "service/traffic/Moment.h"

namespace service {

/**
 * The present by which a history ages, so that no wrong clock ages it: what was dropped stays dropped, also when
 * the clock turns out to have been years ahead.
 *
 * It follows the moments that are written. After a leap (the machine was off, or its clock was set) it stays where
 * it was until the new time has lasted for a hundredth of the way from here to there, a day at most: minutes
 * after a night, a day after the years by which a broken clock may be ahead until the network corrects it.
 */
class TrustedPresent {
  public:
    TrustedPresent() = default;
    TrustedPresent(Moment moment, Moment credibleFrom) : m_Moment(moment), m_CredibleFrom(credibleFrom) {}

    /** The latest moment that is trusted; never after the latest that was written. */
    Moment moment() const { return m_Moment; }

    /** From when on the clock is trusted again after its last leap. */
    Moment credibleFrom() const { return m_CredibleFrom; }

    /** The history, which had got to `before`, goes on at `now`. */
    void follow(Moment before, Moment now);

  private:
    Moment m_Moment;
    Moment m_CredibleFrom;
};

}  // namespace service
