// SPDX-License-Identifier: GPL-3.0-or-later

// Writes a history of a million connections that ends now. Usage: busy_history FILE

#include <cstdio>

#include "bench/BusyYear.h"
#include "service/traffic/Clock.h"

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: busy_history FILE\n");
        return 2;
    }
    std::string error;
    const auto store = service::Store::open(argv[1], error);
    const service::Moment now = service::systemClock();
    if (store == nullptr || !store->load(now) || !BusyYear(now).writeTo(*store)) {
        std::fprintf(stderr, "%s\n", store == nullptr ? error.c_str() : store->lastError().c_str());
        return 1;
    }
    return 0;
}
