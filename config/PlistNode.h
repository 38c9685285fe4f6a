// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <plist/plist.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

namespace config {

struct PlistDeleter {
    void operator()(plist_t node) const { plist_free(node); }
};

/** Owns a value of a property list and everything below it. A bare `plist_t` is borrowed. */
using PlistNode = std::unique_ptr<void, PlistDeleter>;

/** The value of `name` in `dictionary`, which owns it; null when absent or when `dictionary` is none. */
plist_t valueOf(plist_t dictionary, const char* name);

/** Stores `value` in place of whatever `name` held. False when `dictionary` is none. */
bool setValue(plist_t dictionary, const char* name, PlistNode value);

/**
 * What a value says as a number, whether it is kept as an integer, a real or a boolean; nothing for null and for
 * whatever is no number. As an `int` a real loses its fraction, what is out of range becomes the nearest `int`, and
 * NaN becomes 0. libplist does not tell 2^63 and more from the negative integers with the same 64 bits.
 */
std::optional<int> intOf(plist_t value);
std::optional<double> doubleOf(plist_t value);
std::optional<bool> boolOf(plist_t value);

/** UTF-8; nothing for null and for whatever is no string. */
std::optional<std::string> stringOf(plist_t value);

bool isArray(plist_t value);

/** `plist_new_uint` takes a negative value for a huge one from libplist 2.3 on; this does not. */
PlistNode newInteger(std::int64_t value);

/**
 * A value from the text between the tags of an XML `element`. Only for text that is known to be right: libplist
 * makes something of any text.
 */
PlistNode newScalar(const std::string& element, const std::string& text);

}  // namespace config
