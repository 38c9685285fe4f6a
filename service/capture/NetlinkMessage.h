// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

namespace service {

/** One netlink message: what its header says, and a view of its payload in the buffer it was read from. */
struct NetlinkMessage {
    std::uint16_t type = 0;      ///< NLMSG_DONE, NLMSG_ERROR, or the subsystem's own
    std::uint16_t flags = 0;     ///< NLM_F_...
    std::uint32_t sequence = 0;  ///< that of the request it answers
    std::span<const std::byte> payload;
};

/**
 * Takes the first message off `rest`.
 *
 * Nothing with `rest` empty: all were taken. Nothing with `rest` not empty: what is left is not a whole
 * message.
 */
std::optional<NetlinkMessage> takeNetlinkMessage(std::span<const std::byte>& rest);

/** The error number (positive) that a message of type NLMSG_ERROR or NLMSG_DONE carries; 0 when it carries
 * none. */
int netlinkErrorOf(const NetlinkMessage& message);

}  // namespace service
