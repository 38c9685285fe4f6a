// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdio>
#include <string>

#include "protocol/BinarySerializer.h"

/** Appends bytes that are given as hexadecimal digits. */
inline void putHex(BinarySerializer& out, const std::string& digits) {
    for (std::size_t i = 0; i + 1 < digits.size(); i += 2) {
        out.WriteByte(static_cast<unsigned char>(std::stoi(digits.substr(i, 2), nullptr, 16)));
    }
}

/** Takes everything out as hexadecimal digits. */
inline std::string takeHex(BinarySerializer& in) {
    std::string digits;
    for (unsigned char byte = 0; in.ReadByte(byte);) {
        char pair[3];
        std::snprintf(pair, sizeof pair, "%02x", byte);
        digits += pair;
    }
    return digits;
}
