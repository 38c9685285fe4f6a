// SPDX-License-Identifier: GPL-3.0-or-later
#include "libs/utils/src/StringUtils.h"

#include <cstddef>
#include <cstdio>
#include <cstdlib>

#include "libs/utils/src/IpAddressSplitterValidator.h"

int stringToInt(const std::string& text) {
    int value = 0;
    return std::sscanf(text.c_str(), "%i", &value) == 1 ? value : 0;
}

std::string intToString(int value) {
    return std::to_string(value);
}

IpAddress stringToIp(const std::string& text, int family) {
    IpAddress address;
    address.family = family;
    const std::size_t expected = IpAddress::addressLength(family);
    const std::vector<std::string> tokens = splitStr<IpAddressSplitterValidator>(text);
    if (tokens.size() >= expected) {
        for (std::size_t i = 0; i < expected; ++i) {
            address.address[i] = static_cast<std::uint8_t>(std::atoi(tokens[i].c_str()));
        }
    }
    return address;
}

std::string ipToString(const IpAddress& address) {
    std::string text;
    for (std::size_t i = 0; i < IpAddress::addressLength(address.family); ++i) {
        if (i > 0) {
            text += '.';
        }
        text += intToString(address.address[i]);
    }
    return text;
}
