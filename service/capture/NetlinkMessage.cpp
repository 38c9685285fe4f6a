// SPDX-License-Identifier: GPL-3.0-or-later
#include "service/capture/NetlinkMessage.h"

#include <linux/netlink.h>

#include <algorithm>
#include <cstring>
#include <limits>

namespace service {

std::optional<NetlinkMessage> takeNetlinkMessage(std::span<const std::byte>& rest) {
    nlmsghdr header;
    if (rest.size() < sizeof header) {
        return std::nullopt;
    }
    std::memcpy(&header, rest.data(), sizeof header);
    if (header.nlmsg_len < sizeof header || header.nlmsg_len > rest.size()) {
        return std::nullopt;
    }
    const auto payload = rest.subspan(NLMSG_HDRLEN, header.nlmsg_len - NLMSG_HDRLEN);
    // The last message of a datagram may come without its padding.
    const std::size_t padded = NLMSG_ALIGN(static_cast<std::size_t>(header.nlmsg_len));
    rest = rest.subspan(std::min(padded, rest.size()));
    return NetlinkMessage{header.nlmsg_type, header.nlmsg_flags, header.nlmsg_seq, payload};
}

int netlinkErrorOf(const NetlinkMessage& message) {
    int negated = 0;
    if (message.payload.size() >= sizeof negated) {
        std::memcpy(&negated, message.payload.data(), sizeof negated);
    }
    return negated < 0 && negated != std::numeric_limits<int>::min() ? -negated : 0;
}

}  // namespace service
