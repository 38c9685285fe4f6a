// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

/** Names and paths are not ours: these show them as they are, whatever stands in them. Any thread. */
class PlainText {
  public:
    /** `text` on one line: characters that break or steer it become blanks. */
    static QString singleLine(QString text);

    /** `text` with a sign in the place of each character that would break or steer it: a line feed becomes U+240A. */
    static QString withVisibleControls(QString text);

    /** For a menu's item: gains neither a mnemonic nor a shortcut column. */
    static QString menuItem(const QString& text);

    /** For a window's title, where "[*]" would stand for changes that are not saved. */
    static QString windowTitle(const QString& text);

    /** For a tooltip, which would take the text for markup. */
    static QString toolTip(const QString& text);
};
