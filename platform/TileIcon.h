// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QIcon>
#include <QString>

/**
 * Icons that we draw: a rounded tile with a white sign on it, crisp at every size, with fixed colours that
 * stand out from light windows, dark ones and selected rows. They are painted anew each time and hold no
 * picture. Main thread.
 */
class TileIcon {
  public:
    /**
     * For a program without an icon of its own: the first letter or digit of its file name, on one of twelve
     * hues. The same path has the same hue in every run.
     */
    static QIcon forPath(const QString& path);

    /** A processor. */
    static QIcon kernel();

    /** Four tiles in one, for all applications together. */
    static QIcon allApplications();
};
