// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <optional>

#include "protocol/DaemonApplicationReceivedBytesReply.h"
#include "protocol/DaemonApplicationReceivedBytesRequest.h"
#include "protocol/DaemonApplicationSendedBytesReply.h"
#include "protocol/DaemonApplicationSendedBytesRequest.h"
#include "protocol/DaemonTotalReceivedBytesRequest.h"
#include "protocol/DaemonTotalSendedBytesReply.h"
#include "protocol/DaemonTotalSendedBytesRequest.h"
#include "protocol/DaemonTotalStatisticInfo.h"
#include "protocol/DaemonTotalStatisticInfoRequest.h"
#include "protocol/DeamonTotalReceivedBytesReply.h"
#include "service/server/CumulativeBytes.h"
#include "service/server/SessionContext.h"

namespace service {

class RequestRouter;

/** Answers requests for sums: over all applications now, and of one or all of them up to a time. */
class TotalRequests {
  public:
    explicit TotalRequests(const SessionContext& context);

    void addTo(RequestRouter& router);

  private:
    std::optional<DaemonTotalStatisticInfo> totals(const DaemonTotalStatisticInfoRequest& request);
    std::optional<DeamonTotalReceivedBytesReply> received(const DaemonTotalReceivedBytesRequest& request);
    std::optional<DaemonTotalSendedBytesReply> sent(const DaemonTotalSendedBytesRequest& request);
    std::optional<DaemonApplicationReceivedBytesReply> applicationReceived(
        const DaemonApplicationReceivedBytesRequest& request);
    std::optional<DaemonApplicationSendedBytesReply> applicationSent(
        const DaemonApplicationSendedBytesRequest& request);

    const Ledger& m_Ledger;
    CumulativeBytes m_Bytes;
};

}  // namespace service
