// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QByteArrayList>
#include <QDateTime>
#include <QString>

/** Records of comma-separated values by RFC 4180, in UTF-8. Any thread. */
class CsvRecord {
  public:
    /** `text`, in quotes where it needs them. */
    static QByteArray field(const QString& text);

    /** ISO 8601, in the date's own zone with its distance from UTC; empty for an invalid date. */
    static QByteArray dateField(const QDateTime& date);

    /** A line of fields, its end included. */
    static QByteArray joined(const QByteArrayList& fields);
};
