// SPDX-License-Identifier: GPL-3.0-or-later
#include "controls/CsvRecord.h"

#include <algorithm>

QByteArray CsvRecord::field(const QString& text) {
    QString quoted = text;
    if (std::any_of(text.begin(), text.end(), [](QChar c) { return QStringView(u",\"\r\n").contains(c); })) {
        quoted = '"' + quoted.replace('"', "\"\"") + '"';
    }
    return quoted.toUtf8();
}

QByteArray CsvRecord::dateField(const QDateTime& date) {
    return date.isValid() ? date.toOffsetFromUtc(date.offsetFromUtc()).toString(Qt::ISODate).toLatin1()
                          : QByteArray();
}

QByteArray CsvRecord::joined(const QByteArrayList& fields) {
    return fields.join(',') + "\r\n";
}
