// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QPalette>

/**
 * The colours of the interface. Text keeps 4.5:1 to whatever it stands on, the outline of a control 3:1 to the
 * window, as WCAG 2.1 asks for. What a disabled control shows keeps neither, on purpose.
 *
 * Of Qt's roles for bevels two have a meaning of their own here: `Mid` is a hairline that only divides, `Dark`
 * the outline of something that can be operated. `PlaceholderText` is text that steps back, `Link` what marks
 * the keyboard's focus.
 */
class InterfacePalette {
  public:
    static QPalette light();
    static QPalette dark();

    /** A colour on the way from `from` (0) to `to` (1). */
    static QColor mix(const QColor& from, const QColor& to, double part);

    /** Whether `palette` is one for dark windows. */
    static bool isDark(const QPalette& palette);

    /** What is chosen on the way, as in a menu: a tint that text and icons stay readable on unchanged. */
    static QColor tint(const QPalette& palette);
};
