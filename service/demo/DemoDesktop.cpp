// SPDX-License-Identifier: GPL-3.0-or-later
#include "service/demo/DemoDesktop.h"

#include <algorithm>
#include <memory>

namespace service {

void DemoDesktop::start(const DemoProfile& profile, Moment begin) {
    const auto application =
        std::make_shared<const ApplicationIdentity>(ApplicationIdentity{profile.path, profile.name});
    for (const DemoFlow& flow : profile.flows) {
        for (int lane = 0; lane < flow.lanes; ++lane) {
            const auto number = static_cast<std::uint32_t>(m_Lanes.size());
            m_Lanes.emplace_back(m_Scene, profile, flow, application, number, begin);
        }
    }
}

std::vector<TrafficSample> DemoDesktop::advance(Moment now) {
    std::vector<TrafficSample> samples;
    for (DemoLane& lane : m_Lanes) {
        lane.advance(now, samples);
    }
    return samples;
}

Moment DemoDesktop::nextChange() const {
    Moment next = Moment::max();
    for (const DemoLane& lane : m_Lanes) {
        next = std::min(next, lane.nextChange());
    }
    return next;
}

}  // namespace service
