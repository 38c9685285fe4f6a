// SPDX-License-Identifier: GPL-3.0-or-later
#include "service/ledger/Records.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace service {

namespace {

/** Both lists are in the order of ids and stay so; where both know an id, `later` is right. */
template <class Record>
std::vector<Record> joined(const std::vector<Record>& earlier, const std::vector<Record>& later) {
    std::vector<Record> all;
    all.reserve(earlier.size() + later.size());
    // Of equal elements a union keeps those of its first range.
    std::ranges::set_union(later, earlier, std::back_inserter(all), {}, &Record::id, &Record::id);
    return all;
}

}  // namespace

void LedgerChanges::absorb(LedgerChanges later) {
    later.applications = joined(applications, later.applications);
    later.connections = joined(connections, later.connections);
    *this = std::move(later);
}

}  // namespace service
