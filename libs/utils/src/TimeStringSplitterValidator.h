// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

/** Separates the parts of a time's text. */
struct TimeStringSplitterValidator {
    static bool isSplitter(char c) { return c == ':' || c == ' ' || c == '-'; }
};
