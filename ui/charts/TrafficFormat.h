// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDateTime>
#include <QString>
#include <cstdint>

// How bytes and dates become text, everywhere in the program. A megabyte is 2^20 bytes here. Any thread.

/**
 * The full date and the long time of `date` in the user's locale and time zone, with the zone's name last. A
 * name that is only a distance from GMT is left out from its "GMT" on, and the blank in front of it stays.
 * Empty for an invalid date.
 */
QString NSDateToNSString(const QDateTime& date);

double bytesToMegabytes(std::int64_t bytes);

/** Three decimals, no unit, no separators: "1.500". */
QString megabytesToNSString(double megabytes);

/** `bytes` in megabytes, with three decimals. */
QString bytesToNSString(std::int64_t bytes);

/**
 * The grid step, in bytes, of a chart whose highest value is `peak` bytes: the first of a fixed table that
 * needs at most ten steps up to the peak; from 2^10 to 2^40.
 */
double calcGraphicMeshHeightFromBytesPeak(double peak);
