// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <optional>

#include "protocol/DaemonIsServerCleanDataBaseReply.h"
#include "protocol/DaemonIsServerCleanDataBaseRequest.h"
#include "protocol/EventMessage.h"
#include "service/server/SessionContext.h"

namespace service {

class RequestRouter;

/** Carries out what clients tell by events, and says whether the history is being cleaned. */
class ControlRequests {
  public:
    explicit ControlRequests(const SessionContext& context);

    void addTo(RequestRouter& router);

  private:
    std::optional<DaemonIsServerCleanDataBaseReply> isCleaning(
        const DaemonIsServerCleanDataBaseRequest& request);
    void event(const EventMessage& message);

    SessionContext m_Context;
};

}  // namespace service
