// SPDX-License-Identifier: GPL-3.0-or-later
#include "libs/utils/src/IpAddress.h"

#include <algorithm>

std::size_t IpAddress::addressLength(std::int32_t family) {
    return family == IPv4 ? 4 : family == IPv6 ? 16 : 0;
}

bool IpAddress::isEmpty() const {
    return port == 0 && family == IPv4 &&
           std::all_of(address.begin(), address.begin() + 4, [](std::uint8_t byte) { return byte == 0; });
}

bool IpAddress::operator==(const IpAddress& other) const {
    return family == other.family && port == other.port &&
           std::equal(address.begin(), address.begin() + addressLength(family), other.address.begin());
}
