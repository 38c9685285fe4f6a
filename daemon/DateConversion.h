// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDateTime>

#include "libs/utils/src/Time.h"

/** The calendar fields of `date` on the local clock; fractions of a second are lost. All zero for an invalid
 * date. */
Time NSDateToTime(const QDateTime& date);

/** The local date of `time`; invalid when its fields are no calendar time, as the unset time's are. */
QDateTime TimeToNSDate(const Time& time);
