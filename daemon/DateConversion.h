// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDateTime>

#include "libs/utils/src/Time.h"

/** The calendar fields of `date` on the local clock; fractions of a second are lost. All zero for an invalid
 * date. */
Time NSDateToTime(const QDateTime& date);

/**
 * The local date of `time`. Fields beyond their range carry over, as the 30th of February does into March; an hour that
 * the clock skips moves forward, of an hour that occurs twice the first is meant. Invalid for the unset time and for
 * absurd fields.
 */
QDateTime TimeToNSDate(const Time& time);
