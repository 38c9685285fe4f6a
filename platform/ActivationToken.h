// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

/**
 * What a launcher gives a program so that the program's window may come to the front of another's: an
 * `xdg-activation` token on Wayland, a startup id on X11. It travels in the environment and is good for once.
 */
class ActivationToken {
  public:
    /** The token in the environment, which loses it; empty where there is none. */
    static QString take();

    /** Leaves a token for the windowing system, which uses it up at the next activation of a window. */
    static void put(const QString& token);
};
