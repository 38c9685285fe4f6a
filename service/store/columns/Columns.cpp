// SPDX-License-Identifier: GPL-3.0-or-later
#include "service/store/columns/Columns.h"

#include <algorithm>
#include <cstddef>

namespace service {

std::int64_t toColumn(Moment moment) {
    return moment.time_since_epoch().count();
}

Moment momentFromColumn(std::int64_t seconds) {
    return Moment(std::chrono::seconds(seconds));
}

int lifeColumn(const ConnectionRecord& connection) {
    return connection.isOpen ? openLife : closedLife;
}

std::vector<std::uint8_t> toColumn(const IpAddress& address) {
    const std::size_t length = IpAddress::addressLength(address.family);
    std::vector<std::uint8_t> blob;
    blob.reserve(length + 3);
    blob.push_back(static_cast<std::uint8_t>(address.family));
    blob.insert(blob.end(), address.address.begin(), address.address.begin() + length);
    blob.push_back(static_cast<std::uint8_t>(address.port >> 8));
    blob.push_back(static_cast<std::uint8_t>(address.port));
    return blob;
}

IpAddress addressFromColumn(std::span<const std::uint8_t> blob) {
    IpAddress address;
    if (blob.empty() || blob.size() != IpAddress::addressLength(blob.front()) + 3) {
        return address;
    }
    address.family = blob.front();
    const auto bytes = blob.subspan(1, blob.size() - 3);
    std::ranges::copy(bytes, address.address.begin());
    const auto port = blob.last(2);
    address.port = static_cast<std::uint16_t>(port[0] << 8 | port[1]);
    return address;
}

}  // namespace service
