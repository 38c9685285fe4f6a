// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "libs/utils/src/IpAddress.h"
#include "service/traffic/Counters.h"
#include "service/traffic/Moment.h"
#include "service/traffic/TrafficSample.h"

namespace service {

using ApplicationId = std::int32_t;  ///< 1 and up; never reused, not even after the history was cleaned
using ConnectionId = std::int32_t;   ///< 1 and up; never reused

/** One application as it stands. */
struct ApplicationRecord {
    ApplicationId id = 0;
    std::string name;
    std::string path;
    Counters counters;  ///< since `firstSeen`
    Moment firstSeen;
    Moment lastSeen;
};

/** One connection as it stands. */
struct ConnectionRecord {
    ConnectionId id = 0;
    ApplicationId applicationId = 0;
    Moment start;
    Moment end;  ///< closed; while it is open, last seen moving bytes
    bool isOpen = false;
    Direction direction = Direction::Undefined;
    std::int32_t socketDomain = 0;
    std::int32_t socketType = 0;
    std::int32_t socketProtocol = 0;
    ByteCount bytes;    ///< at the IP layer
    ByteCount payload;  ///< of those what programs gave and got
    IpAddress remote;
    IpAddress local;
};

/** The sums over all applications. */
struct TotalsRecord {
    Counters counters;
    Moment start;  ///< when counting began
};

/** What a ledger starts from: the last run's end, or nothing. */
struct LedgerState {
    TotalsRecord totals;
    std::vector<ApplicationRecord> applications;
    ApplicationId nextApplicationId = 1;
    ConnectionId nextConnectionId = 1;
};

/**
 * What changed in a ledger since the changes were taken last. All of it stands at `moment`; the sum of the
 * counters of all applications equals `totals` at that moment. Both lists are in the order of ids.
 */
struct LedgerChanges {
    Moment moment;
    TotalsRecord totals;
    std::vector<ApplicationRecord> applications;
    std::vector<ConnectionRecord> connections;
    ApplicationId nextApplicationId = 1;
    ConnectionId nextConnectionId = 1;
    bool wiped = false;  ///< these are the first after a clearing: what the store holds is void

    bool empty() const { return applications.empty() && connections.empty(); }

    /** Takes in later changes of the same count, as if all had been taken at once then. */
    void absorb(LedgerChanges later);
};

}  // namespace service
