// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <vector>

#include "service/demo/DemoLane.h"
#include "service/demo/DemoProfile.h"
#include "service/demo/DemoScene.h"

namespace service {

/** A machine whose applications move bytes that nobody ever sent, by a clock that its user holds. */
class DemoDesktop {
  public:
    explicit DemoDesktop(const DemoScene& scene) : m_Scene(scene) {}

    /** Lets an application work from `begin` on. The profile must outlive the desktop. */
    void start(const DemoProfile& profile, Moment begin);

    /** Connections that were new, moved bytes or ended since the previous call, up to and including `now`. */
    std::vector<TrafficSample> advance(Moment now);

    /** When a connection opens or closes next; `Moment::max()` when none ever will. */
    Moment nextChange() const;

  private:
    DemoScene m_Scene;
    std::vector<DemoLane> m_Lanes;
};

}  // namespace service
