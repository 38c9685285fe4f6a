// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QIcon>
#include <QString>

/** The pictures that the desktop shows for files. Main thread; results are cached by path. */
class WorkspaceIcons {
  public:
    /**
     * The icon of the application that owns the executable or bundle at `path`, else that of the file's type.
     * Never blank.
     */
    static QIcon iconForFile(const QString& path);

    /** The generic icon of a kind of file, such as "bundle". Never blank. */
    static QIcon iconForFileType(const QString& type);
};
