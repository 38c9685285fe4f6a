// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <memory>
#include <optional>
#include <vector>

#include "service/demo/DemoProfile.h"
#include "service/demo/DemoRandom.h"
#include "service/demo/DemoRates.h"
#include "service/demo/DemoScene.h"

namespace service {

/** One connection after the other of one flow of one application, with pauses in between. */
class DemoLane {
  public:
    /**
     * `profile` and its `flow` must outlive the lane; `number` is the lane's own among all of its desktop.
     * Where the application is in use at `begin` already, a connection opens at once.
     */
    DemoLane(const DemoScene& scene, const DemoProfile& profile, const DemoFlow& flow,
             std::shared_ptr<const ApplicationIdentity> application, std::uint32_t number, Moment begin);

    /** Adds what happened since the previous call up to and including `now`. */
    void advance(Moment now, std::vector<TrafficSample>& samples);

    /** When a connection opens or closes next; `Moment::max()` when none ever will. */
    Moment nextChange() const;

  private:
    struct Connection {
        TrafficSample sample;  ///< as its next sample begins: nothing moved yet
        Moment closes;
        double received;  ///< mean bytes of payload per second
        double sent;
        DemoWave wave;
        ByteCount payload{};  ///< reported so far
        ByteCount moved{};    ///< likewise, with headers
        bool announced = false;
    };

    /** Draws the next connection, which opens when the application was in use for a `pause` since `from`. */
    void plan(Moment from, std::chrono::seconds pause);
    TrafficSample drawSample(Moment opened);
    void report(Moment upTo, std::vector<TrafficSample>& samples);
    std::chrono::seconds drawSeconds(std::chrono::seconds mean, double stretch);

    DemoScene m_Scene;
    const DemoProfile& m_Profile;
    const DemoFlow& m_Flow;
    std::shared_ptr<const ApplicationIdentity> m_Application;
    std::uint64_t m_NextKey;
    DemoRandom m_Random;
    std::optional<Connection> m_Connection;  ///< open, or the next to open
};

}  // namespace service
