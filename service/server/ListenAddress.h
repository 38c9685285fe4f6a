// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <netinet/in.h>

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace service {

/** Where the daemon waits for clients. */
struct ListenAddress {
    in_addr address{.s_addr = htonl(INADDR_LOOPBACK)};
    std::uint16_t port = 10023;  ///< host order; 0 lets the system choose one

    /** Reads "127.0.0.1:10023": an IPv4 address in numbers and a port. */
    static std::optional<ListenAddress> parse(std::string_view text);

    std::string text() const;
};

}  // namespace service
