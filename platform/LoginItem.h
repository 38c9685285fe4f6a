// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

/**
 * Whether the session starts this program when its user logs in. On Linux an entry for it stands among the XDG
 * autostart entries, the system's or the user's own; on macOS there is a launch agent of the user's. Main thread.
 */
class LoginItem {
  public:
    /** Whether the next log-in starts a program that exists. */
    static bool isEnabled();

    /** Whether anything says if this program is to start, be it that it is not. */
    static bool exists();

    /**
     * Writes or removes the user's own file only, and only where the answer would be another one without that: an
     * entry that the user has edited stays. False when that fails.
     */
    static bool setEnabled(bool enabled);
};
