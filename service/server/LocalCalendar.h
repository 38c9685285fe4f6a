// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "libs/utils/src/Time.h"
#include "service/traffic/Moment.h"

namespace service {

/**
 * Where the daemon's UTC meets the link's local calendar time, with the zone's rules at the moment in
 * question, not today's. Follows a change of the machine's zone. Any thread.
 */
class LocalCalendar {
  public:
    static Time fromMoment(Moment moment);

    /**
     * The moment that a calendar time means. Of an hour that occurs twice the first is meant; a time that a
     * change of the clock skips moves forward by what was skipped. Every value has an answer: years outside
     * 1970 to 9999 become the first or last moment of that range, other fields their nearest valid value.
     */
    static Moment toMoment(const Time& time);
};

}  // namespace service
