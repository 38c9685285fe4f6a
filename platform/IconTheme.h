// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

/** Where the icons of actions come from: the desktop's icon theme, or Breeze where it has none. */
class IconTheme {
  public:
    /** Makes installed icons known also on a platform without a desktop. Call it once, before `follow`. */
    static void install();

    /** Chooses the icons that are made for dark windows or for light ones. Icons in use change with them. */
    static void follow(bool isDark);
};
