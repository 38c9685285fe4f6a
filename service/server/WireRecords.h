// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "protocol/DaemonApplicationInfo.h"
#include "protocol/DaemonConnectionInfo.h"
#include "protocol/DaemonTotalStatisticInfo.h"
#include "service/ledger/Records.h"

namespace service {

/** The ledger's records as they travel on the link, their times on the local calendar. */
DaemonApplicationInfo toWire(const ApplicationRecord& application);
DaemonConnectionInfo toWire(const ConnectionRecord& connection);
DaemonTotalStatisticInfo toWire(const TotalsRecord& totals);

}  // namespace service
