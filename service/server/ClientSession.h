// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <functional>
#include <span>

#include "service/server/ApplicationRequests.h"
#include "service/server/ConnectionRequests.h"
#include "service/server/ControlRequests.h"
#include "service/server/RequestRouter.h"
#include "service/server/TotalRequests.h"

namespace service {

/**
 * One client as the daemon's inside sees it: answers its requests and keeps the cursors that it opened. Knows
 * nothing of sockets: frames come in, replies go to an outbox. Server's thread.
 */
class ClientSession {
  public:
    /** `wake` is called on another thread when a frame that was not served yet can be. */
    ClientSession(const SessionContext& context, std::function<void()> wake);

    ClientSession(const ClientSession&) = delete;
    ClientSession& operator=(const ClientSession&) = delete;

    RequestRouter::Outcome serve(const MessageHeader& header, std::span<const std::uint8_t> body,
                                 Outbox& outbox) {
        return m_Router.serve(header, body, outbox);
    }

  private:
    RequestRouter m_Router;
    ApplicationRequests m_Applications;
    ConnectionRequests m_Connections;
    TotalRequests m_Totals;
    ControlRequests m_Control;
};

}  // namespace service
