// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <functional>
#include <optional>

#include "protocol/DaemonConnectionInfo.h"
#include "protocol/DaemonCreateConnectionsIteratorReply.h"
#include "protocol/DaemonCreateConnectionsIteratorRequest.h"
#include "protocol/DaemonDeleteConnectionsIteratorRequest.h"
#include "protocol/DaemonGetConnectionInfoRequest.h"
#include "protocol/DaemonGetCountConnectionsReply.h"
#include "protocol/DaemonGetCountConnectionsRequest.h"
#include "protocol/DaemonSetConnectionsIteratorParametersRequest.h"
#include "service/server/ConnectionsCursor.h"
#include "service/server/CursorTable.h"
#include "service/server/SessionContext.h"

namespace service {

class RequestRouter;

/** Answers one client's requests about connections and keeps its cursors over them. */
class ConnectionRequests {
  public:
    /** `wake` is called on another thread when a request that was not answered yet can be. */
    ConnectionRequests(const SessionContext& context, std::function<void()> wake);

    void addTo(RequestRouter& router);

  private:
    std::optional<DaemonCreateConnectionsIteratorReply> create(
        const DaemonCreateConnectionsIteratorRequest& request);
    void setParameters(const DaemonSetConnectionsIteratorParametersRequest& request);
    Later<std::optional<DaemonGetCountConnectionsReply>> count(
        const DaemonGetCountConnectionsRequest& request);
    Later<std::optional<DaemonConnectionInfo>> row(const DaemonGetConnectionInfoRequest& request);
    void remove(const DaemonDeleteConnectionsIteratorRequest& request);

    std::optional<DaemonConnectionInfo> info(ConnectionId id);

    SessionContext m_Context;
    const std::function<void()> m_Wake;
    CursorTable<ConnectionsCursor> m_Cursors;
};

}  // namespace service
