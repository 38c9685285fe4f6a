// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "libs/utils/src/IpAddress.h"

/** The number at the start of `text`; 0x makes it hexadecimal, a leading 0 octal. 0 when there is none. */
int stringToInt(const std::string& text);

std::string intToString(int value);

/**
 * The address that `text` gives as decimal bytes joined by full stops, 4 for IPv4 and 16 for IPv6 (not the
 * colon notation). All zero when there are too few; what is too many is ignored. The port is 0.
 */
IpAddress stringToIp(const std::string& text, int family);

/** The decimal bytes joined by full stops; empty for an unknown family. The port is never part of it. */
std::string ipToString(const IpAddress& address);

/** The non-empty pieces of `text` between characters that `Validator::isSplitter` accepts. */
template <class Validator>
std::vector<std::string> splitStr(const std::string& text) {
    std::vector<std::string> tokens;
    std::string token;
    const auto closeToken = [&] {
        if (!token.empty()) {
            tokens.push_back(std::exchange(token, {}));
        }
    };
    for (const char c : text) {
        if (Validator::isSplitter(c)) {
            closeToken();
        } else {
            token += c;
        }
    }
    closeToken();
    return tokens;
}
