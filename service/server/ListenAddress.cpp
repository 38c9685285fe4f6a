// SPDX-License-Identifier: GPL-3.0-or-later
#include "service/server/ListenAddress.h"

#include <arpa/inet.h>

#include <array>
#include <charconv>

namespace service {

std::optional<ListenAddress> ListenAddress::parse(std::string_view text) {
    const std::size_t colon = text.find(':');
    if (colon == std::string_view::npos) {
        return std::nullopt;
    }
    ListenAddress result;
    const std::string host(text.substr(0, colon));
    const std::string_view port = text.substr(colon + 1);
    const auto [end, failure] = std::from_chars(port.begin(), port.end(), result.port);
    const bool portIsRead = failure == std::errc() && end == port.end();
    if (!portIsRead || ::inet_pton(AF_INET, host.c_str(), &result.address) != 1) {
        return std::nullopt;
    }
    return result;
}

std::string ListenAddress::text() const {
    std::array<char, INET_ADDRSTRLEN> host{};
    ::inet_ntop(AF_INET, &address, host.data(), host.size());
    return std::string(host.data()) + ":" + std::to_string(port);
}

}  // namespace service
