// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

/** The desktop's own window about a file: its properties on Linux, the Finder's information window on macOS. */
class FileInformation {
  public:
    /**
     * Asks the file manager to show the window for `path`, which is absolute. Returns at once; where there is no
     * file manager, no such file or no session bus, nothing happens. Main thread.
     */
    static void showForFile(const QString& path);

    /** The AppleScript that makes the Finder show the window; on macOS it is what showForFile() runs. */
    static QString finderScript(const QString& path);
};
