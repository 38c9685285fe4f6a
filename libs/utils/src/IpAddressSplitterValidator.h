// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

/** Separates the bytes of an address's text. */
struct IpAddressSplitterValidator {
    static bool isSplitter(char c) { return c == '.'; }
};
