// SPDX-License-Identifier: GPL-3.0-or-later
#include "controls/FileName.h"

#include <QRegularExpression>

QString FileName::fromTitle(QString title) {
    static const QRegularExpression forbidden(QStringLiteral("[\\\\/:*?\"<>|[:cntrl:]]"));
    return title.replace(forbidden, QStringLiteral("_"));
}
