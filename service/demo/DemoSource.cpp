// SPDX-License-Identifier: GPL-3.0-or-later
#include "service/demo/DemoSource.h"

#include <algorithm>

#include "service/demo/DemoProfiles.h"

namespace service {

namespace {

using namespace std::chrono;

constexpr seconds firstArrival{20};
constexpr seconds shortestWait{120};
constexpr seconds longestWait{300};

bool isKnown(const DemoProfile& profile, const std::vector<ApplicationRecord>& known) {
    return std::any_of(known.begin(), known.end(), [&](const ApplicationRecord& application) {
        return application.path == profile.path;
    });
}

}  // namespace

DemoSource::DemoSource(const DemoScene& scene, const std::vector<ApplicationRecord>& known)
    : m_Desktop(scene),
      m_Random(scene.seed),
      m_NextArrival(scene.present + firstArrival),
      m_LastPoll(scene.present) {
    for (const DemoProfile& profile : demoProfiles()) {
        m_Desktop.start(profile, scene.present);
    }
    for (const DemoProfile& profile : demoNewcomers()) {
        if (isKnown(profile, known)) {
            m_Desktop.start(profile, scene.present);
        } else {
            m_Newcomers.push_back(&profile);
        }
    }
}

std::vector<TrafficSample> DemoSource::poll(Moment now) {
    m_LastPoll = std::max(m_LastPoll, now);  // a clock that was set back moves nothing until it has caught up
    while (!m_Newcomers.empty() && m_NextArrival <= m_LastPoll) {
        m_Desktop.start(*m_Newcomers.front(), m_NextArrival);
        m_Newcomers.pop_front();
        m_NextArrival +=
            seconds(m_Random.below(static_cast<int>((longestWait - shortestWait).count()))) + shortestWait;
    }
    return m_Desktop.advance(m_LastPoll);
}

}  // namespace service
