// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

/** Names that are offered for files. Any thread. */
class FileName {
  public:
    /** `title` without what some file systems do not allow in a name. */
    static QString fromTitle(QString title);
};
