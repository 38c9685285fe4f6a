// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string_view>
#include <vector>

#include "service/traffic/Moment.h"
#include "service/traffic/StatusLine.h"
#include "service/traffic/TrafficSample.h"

namespace service {

/** Where the daemon's figures come from. Used by one thread at a time, the one that polls it about once a
 * second. */
class TrafficSource {
  public:
    virtual ~TrafficSource() = default;

    /** Short name for the log: "bpf", "diag", "demo". */
    virtual std::string_view name() const = 0;

    /** Connections that are new, moved bytes or ended since the previous call; `now` is the moment of this
     * one. */
    virtual std::vector<TrafficSample> poll(Moment now) = 0;

    /** As `poll`, and nothing that it knows waits for another one. */
    virtual std::vector<TrafficSample> pollLast(Moment now) { return poll(now); }

    /** How it is doing, for a person; any thread. */
    virtual std::vector<StatusLine> status() const { return {}; }
};

}  // namespace service
