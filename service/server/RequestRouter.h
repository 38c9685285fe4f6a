// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <span>

#include "protocol/BinarySerializer.h"
#include "protocol/MessageHeader.h"
#include "service/server/Outbox.h"

namespace service {

/**
 * Hands each request to the method that answers it, by the type number that the request's structure carries.
 *
 * Whoever waits for a reply always gets one: an empty body when the request can't be read or when what it
 * asks for does not exist, which a front end takes for "there is none".
 */
class RequestRouter {
  public:
    enum class Outcome { Served, UnknownType, ShortBody };

    /** Has `Request` answered by a method; `handler` must outlive the router's use. */
    template <class Handler, class Request, class Reply>
    void route(Handler& handler, std::optional<Reply> (Handler::*answer)(const Request&)) {
        m_Routes[Request::MessageType] = [&handler, answer](std::int32_t id, BinarySerializer& body,
                                                            Outbox& outbox) {
            Request request;
            const bool whole = request.UnserializeFrom(body);
            outbox.putReply(id, whole ? (handler.*answer)(request) : std::optional<Reply>());
            return whole;
        };
    }

    /** Has `Request`, for whose reply nobody waits, carried out by a method. */
    template <class Handler, class Request>
    void route(Handler& handler, void (Handler::*carryOut)(const Request&)) {
        m_Routes[Request::MessageType] = [&handler, carryOut](std::int32_t, BinarySerializer& body, Outbox&) {
            Request request;
            const bool whole = request.UnserializeFrom(body);
            if (whole) {
                (handler.*carryOut)(request);
            }
            return whole;
        };
    }

    /** Serves one frame; its reply, if it gets one, is put into `outbox`. */
    Outcome serve(const MessageHeader& header, std::span<const std::uint8_t> body, Outbox& outbox) const;

  private:
    /** False when the body is too short for its request. */
    using Route = std::function<bool(std::int32_t requestId, BinarySerializer& body, Outbox& outbox)>;

    std::map<std::int32_t, Route> m_Routes;
};

}  // namespace service
