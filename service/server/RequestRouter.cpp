// SPDX-License-Identifier: GPL-3.0-or-later
#include "service/server/RequestRouter.h"

namespace service {

RequestRouter::Outcome RequestRouter::serve(const MessageHeader& header, std::span<const std::uint8_t> body,
                                            Outbox& outbox) const {
    const auto found = m_Routes.find(header.messageType);
    if (found == m_Routes.end()) {
        outbox.putEmptyReply(header.messageId);
        return Outcome::UnknownType;
    }
    BinarySerializer serializedBody;
    serializedBody.WriteData(body.data(),
                             static_cast<int>(body.size()));  // refuses 0 bytes, which then are none
    return found->second(header.messageId, serializedBody, outbox);
}

}  // namespace service
