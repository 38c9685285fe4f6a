// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <span>

#include "protocol/BinarySerializer.h"
#include "protocol/MessageHeader.h"
#include "service/server/Later.h"
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
    enum class Outcome {
        Served,
        UnknownType,
        ShortBody,
        NotYet,  ///< nothing was put into the outbox: the frame is to be served again later
    };

    /** Has `Request` answered by a method; `handler` must outlive the router's use. */
    template <class Handler, class Request, class Reply>
    void route(Handler& handler, std::optional<Reply> (Handler::*answer)(const Request&)) {
        m_Routes[Request::MessageType] = [&handler, answer](std::int32_t id, BinarySerializer& body,
                                                            Outbox& outbox) {
            Request request;
            const bool whole = request.UnserializeFrom(body);
            outbox.putReply(id, whole ? (handler.*answer)(request) : std::optional<Reply>());
            return outcomeOf(whole);
        };
    }

    /** Has `Request` answered by a method that may ask for more time. */
    template <class Handler, class Request, class Reply>
    void route(Handler& handler, Later<std::optional<Reply>> (Handler::*answer)(const Request&)) {
        m_Routes[Request::MessageType] = [&handler, answer](std::int32_t id, BinarySerializer& body,
                                                            Outbox& outbox) {
            Request request;
            const bool whole = request.UnserializeFrom(body);
            const auto reply =
                whole ? (handler.*answer)(request) : Later<std::optional<Reply>>{.isThere = true};
            if (!reply.isThere) {
                return Outcome::NotYet;
            }
            outbox.putReply(id, reply.value);
            return outcomeOf(whole);
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
            return outcomeOf(whole);
        };
    }

    /** Serves one frame; its reply, if it gets one now, is put into `outbox`. */
    Outcome serve(const MessageHeader& header, std::span<const std::uint8_t> body, Outbox& outbox) const;

  private:
    static Outcome outcomeOf(bool wholeBody) { return wholeBody ? Outcome::Served : Outcome::ShortBody; }

    using Route = std::function<Outcome(std::int32_t requestId, BinarySerializer& body, Outbox& outbox)>;

    std::map<std::int32_t, Route> m_Routes;
};

}  // namespace service
