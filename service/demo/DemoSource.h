// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <deque>
#include <string_view>
#include <vector>

#include "service/demo/DemoDesktop.h"
#include "service/demo/DemoRandom.h"
#include "service/demo/DemoScene.h"
#include "service/ledger/Records.h"
#include "service/traffic/TrafficSource.h"

namespace service {

/**
 * Invented live traffic from the scene's present on, which follows on the year that `writeDemoHistory`
 * writes. Every few minutes, the first time after 20 s, an application appears that was not there before,
 * until all have come.
 */
class DemoSource : public TrafficSource {
  public:
    /** `known`: the applications of the history; a newcomer among them works from the start like any other.
     */
    DemoSource(const DemoScene& scene, const std::vector<ApplicationRecord>& known);

    std::string_view name() const override { return "demo"; }
    std::vector<TrafficSample> poll(Moment now) override;

  private:
    DemoDesktop m_Desktop;
    DemoRandom m_Random;
    std::deque<const DemoProfile*> m_Newcomers;  ///< still to come, the next one first
    Moment m_NextArrival;
    Moment m_LastPoll;
};

}  // namespace service
