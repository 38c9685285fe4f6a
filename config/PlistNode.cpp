// SPDX-License-Identifier: GPL-3.0-or-later
#include "config/PlistNode.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <limits>

namespace config {

namespace {

bool isDictionary(plist_t node) {
    return node != nullptr && plist_get_node_type(node) == PLIST_DICT;
}

/** Integers above the signed range come out negative, as two's complement reads them. */
std::int64_t integerOf(plist_t node) {
    std::uint64_t value = 0;
    plist_get_uint_val(node, &value);
    return static_cast<std::int64_t>(value);
}

double realOf(plist_t node) {
    double value = 0;
    plist_get_real_val(node, &value);
    return value;
}

bool booleanOf(plist_t node) {
    std::uint8_t value = 0;
    plist_get_bool_val(node, &value);
    return value != 0;
}

/** Calls `convert` with the number in its own kind. */
template <class Result, class Convert>
std::optional<Result> numberOf(plist_t value, Convert convert) {
    switch (value == nullptr ? PLIST_NONE : plist_get_node_type(value)) {
        case PLIST_UINT:
            return convert(integerOf(value));
        case PLIST_REAL:
            return convert(realOf(value));
        case PLIST_BOOLEAN:
            return convert(booleanOf(value));
        default:
            return std::nullopt;
    }
}

template <class Number>
int toInt(Number number) {
    using Limits = std::numeric_limits<int>;
    if constexpr (std::is_floating_point_v<Number>) {
        if (std::isnan(number)) {
            return 0;
        }
    }
    return static_cast<int>(
        std::clamp(number, static_cast<Number>(Limits::min()), static_cast<Number>(Limits::max())));
}

template <>
int toInt(bool number) {
    return number ? 1 : 0;
}

}  // namespace

plist_t valueOf(plist_t dictionary, const char* name) {
    return isDictionary(dictionary) ? plist_dict_get_item(dictionary, name) : nullptr;
}

bool setValue(plist_t dictionary, const char* name, PlistNode value) {
    if (!isDictionary(dictionary) || value == nullptr) {
        return false;
    }
    plist_dict_set_item(dictionary, name, value.release());
    return true;
}

std::optional<int> intOf(plist_t value) {
    return numberOf<int>(value, [](auto number) { return toInt(number); });
}

std::optional<double> doubleOf(plist_t value) {
    return numberOf<double>(value, [](auto number) { return static_cast<double>(number); });
}

std::optional<bool> boolOf(plist_t value) {
    return numberOf<bool>(value, [](auto number) { return number != 0; });
}

std::optional<std::string> stringOf(plist_t value) {
    if (value == nullptr || plist_get_node_type(value) != PLIST_STRING) {
        return std::nullopt;
    }
    std::uint64_t length = 0;
    const char* text = plist_get_string_ptr(value, &length);
    return std::string(text, length);
}

bool isArray(plist_t value) {
    return value != nullptr && plist_get_node_type(value) == PLIST_ARRAY;
}

PlistNode newInteger(std::int64_t value) {
    return newScalar("integer", std::to_string(value));
}

PlistNode newScalar(const std::string& element, const std::string& text) {
    std::string document = "<plist><";
    document.append(element).append(">").append(text).append("</").append(element).append("></plist>");
    plist_t node = nullptr;
    plist_from_xml(document.data(), static_cast<std::uint32_t>(document.size()), &node);
    return PlistNode(node);
}

}  // namespace config
