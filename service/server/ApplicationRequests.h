// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <optional>

#include "protocol/DaemonApplicationInfo.h"
#include "protocol/DaemonApplicationInfoFromIdRequest.h"
#include "protocol/DaemonCreateApplicationIteratorReply.h"
#include "protocol/DaemonCreateApplicationIteratorRequest.h"
#include "protocol/DaemonDeleteApplicationsIteratorRequest.h"
#include "protocol/DaemonGetApplicationInfoRequest.h"
#include "protocol/DaemonGetCountApplicationsReply.h"
#include "protocol/DaemonGetCountApplicationsRequest.h"
#include "protocol/DaemonSetApplicatonsIteratorParametersRequest.h"
#include "service/server/ApplicationsCursor.h"
#include "service/server/CursorTable.h"
#include "service/server/SessionContext.h"

namespace service {

class RequestRouter;

/** Answers one client's requests about applications and keeps its cursors over them. */
class ApplicationRequests {
  public:
    explicit ApplicationRequests(const SessionContext& context);

    void addTo(RequestRouter& router);

  private:
    std::optional<DaemonCreateApplicationIteratorReply> create(
        const DaemonCreateApplicationIteratorRequest& request);
    void setParameters(const DaemonSetApplicatonsIteratorParametersRequest& request);
    std::optional<DaemonGetCountApplicationsReply> count(const DaemonGetCountApplicationsRequest& request);
    std::optional<DaemonApplicationInfo> row(const DaemonGetApplicationInfoRequest& request);
    std::optional<DaemonApplicationInfo> byId(const DaemonApplicationInfoFromIdRequest& request);
    void remove(const DaemonDeleteApplicationsIteratorRequest& request);

    std::optional<DaemonApplicationInfo> info(ApplicationId id) const;

    SessionContext m_Context;
    CursorTable<ApplicationsCursor> m_Cursors;
};

}  // namespace service
