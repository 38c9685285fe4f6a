// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

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
    /**
     * Rows of which one client's cursors may hold the order together, four bytes each; when there are more,
     * only the cursor in use keeps its own.
     */
    static constexpr std::size_t maxHeldRows = 32'000'000;

    explicit ConnectionRequests(const SessionContext& context);

    void addTo(RequestRouter& router);

  private:
    std::optional<DaemonCreateConnectionsIteratorReply> create(
        const DaemonCreateConnectionsIteratorRequest& request);
    void setParameters(const DaemonSetConnectionsIteratorParametersRequest& request);
    std::optional<DaemonGetCountConnectionsReply> count(const DaemonGetCountConnectionsRequest& request);
    std::optional<DaemonConnectionInfo> row(const DaemonGetConnectionInfoRequest& request);
    void remove(const DaemonDeleteConnectionsIteratorRequest& request);

    std::optional<DaemonConnectionInfo> info(ConnectionId id);
    void limitHeldRows(const ConnectionsCursor& inUse);

    SessionContext m_Context;
    CursorTable<ConnectionsCursor> m_Cursors;
};

}  // namespace service
