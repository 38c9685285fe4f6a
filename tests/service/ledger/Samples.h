// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <memory>
#include <string>

#include "service/traffic/TrafficSample.h"

namespace service {

constexpr Moment at(int seconds) {
    return Moment(std::chrono::seconds(1'700'000'000 + seconds));
}

inline TrafficSample sampleOf(std::uint64_t key, const std::string& path, ByteCount moved,
                              bool closed = false, int socketProtocol = 6) {
    TrafficSample sample;
    sample.connectionKey = key;
    sample.application = std::make_shared<ApplicationIdentity>(ApplicationIdentity{path, "name of " + path});
    sample.socketProtocol = socketProtocol;
    sample.opened = at(0);
    sample.moved = moved;
    sample.payload = {moved.received / 2, moved.sent / 2};
    sample.closed = closed;
    return sample;
}

}  // namespace service
