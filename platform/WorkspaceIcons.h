// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QIcon>
#include <QString>

/** The pictures that the desktop shows for files. Main thread; the latest results are kept by path. */
class WorkspaceIcons {
  public:
    /**
     * The icon of the application that owns the executable or bundle at `path`, else a tile with the first
     * letter of the file's name. The folder of applications has an icon of its own. Never blank.
     */
    static QIcon iconForFile(const QString& path);

    /** The generic icon of a kind of file, such as "bundle". Never blank. */
    static QIcon iconForFileType(const QString& type);
};
