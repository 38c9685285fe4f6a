// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <array>
#include <chrono>
#include <optional>

#include "service/demo/DemoProfile.h"
#include "service/demo/DemoRandom.h"
#include "service/demo/DemoScene.h"

namespace service {

/**
 * How hard an application is used in the hour of `at`: 0 not at all, otherwise around 1. A pure function of
 * its arguments. From the scene's present on somebody watches the demo, so that habits count for less:
 * whatever is still in use at all is likely to be busy, also at night.
 */
double demoIntensity(const DemoProfile& profile, Moment at, const DemoScene& scene);

/**
 * When `pause` has passed since `from`, counting only the time in which the application is in use; nothing
 * when it is over for good before.
 */
std::optional<Moment> demoOpening(const DemoProfile& profile, Moment from, std::chrono::seconds pause,
                                  const DemoScene& scene);

/**
 * By how much the lives and pauses of a flow's connections are stretched when one opens at `at`. The written
 * year knows fewer, longer connections than the live traffic, at equal rates: tens of thousands instead of
 * millions.
 */
double demoStretch(const DemoFlow& flow, Moment at, const DemoScene& scene);

/** The ups and downs of one connection's rate: three sine waves between a few seconds and a few minutes long.
 */
class DemoWave {
  public:
    DemoWave(double swing, DemoRandom& random);

    /**
     * What `elapsed` seconds are worth, in seconds at the mean rate. Never falls as `elapsed` grows, so that
     * bytes are differences of it, whether a second or an hour lies between two looks.
     */
    double progress(double elapsed) const;

  private:
    struct Part {
        double amplitude;     ///< seconds
        double frequency;     ///< radians per second
        double phase;         ///< radians
        double cosineAtZero;  ///< of the phase
    };
    std::array<Part, 3> m_Parts;
};

}  // namespace service
