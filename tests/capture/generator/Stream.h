// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <string>

namespace traffic {

/**
 * Moves exactly `bytes` through a stream socket in the way that `method` names: "plain", "sendfile", "splice",
 * "zerocopy", "mmsg", or those of a `Ring`. Ways of sending that have no
 * counterpart receive plainly.
 */
void sendStream(int socket, std::uint64_t bytes, const std::string& method);
void receiveStream(int socket, std::uint64_t bytes, const std::string& method);

}  // namespace traffic
