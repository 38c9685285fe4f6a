// SPDX-License-Identifier: GPL-3.0-or-later

// Writes a history of many applications, none of which moves bytes any more.
// Usage: many_applications FILE COUNT

#include <cstdio>
#include <cstdlib>

#include "service/ledger/Records.h"
#include "service/store/Store.h"
#include "service/traffic/Clock.h"

namespace {

using namespace service;

LedgerChanges history(int count, Moment now) {
    LedgerChanges changes;
    changes.moment = now;
    for (int id = 1; id <= count; ++id) {
        ApplicationRecord application;
        application.id = id;
        application.name = "Application " + std::to_string(id);
        application.path = "/usr/lib/application-" + std::to_string(id) + "/bin/main";
        const ByteCount bytes{id * 100'000LL, id * 10'000LL};
        application.counters[ProtocolClass::Tcp] = bytes;
        application.firstSeen = application.lastSeen = now;
        changes.totals.counters[ProtocolClass::Tcp] += bytes;
        changes.applications.push_back(application);
    }
    changes.totals.start = now;
    return changes;
}

}  // namespace

int main(int argc, char** argv) {
    const int count = argc == 3 ? std::atoi(argv[2]) : 0;
    if (count < 1) {
        std::fprintf(stderr, "usage: many_applications FILE COUNT\n");
        return 2;
    }
    std::string error;
    const auto store = Store::open(argv[1], error);
    const Moment now = systemClock();
    if (store == nullptr || !store->load(now) || !store->append(history(count, now))) {
        std::fprintf(stderr, "%s\n", store == nullptr ? error.c_str() : store->lastError().c_str());
        return 1;
    }
    return 0;
}
