// SPDX-License-Identifier: GPL-3.0-or-later
#include "service/demo/DemoRates.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace service {

namespace {

using namespace std::chrono;

/** An application that will not be used for so long will never be used again. */
constexpr days searchLimit{400};

/** Chance of any application in any hour while somebody watches, at least. */
constexpr double watchedChance = 0.75;

/** Life and pause together of a connection in the written year, at least. */
constexpr minutes shortestCycleOfYear{120};

bool isLive(Moment at, const DemoScene& scene) {
    return at >= scene.present;
}

bool isInstalled(const DemoProfile& profile, Moment at, const DemoScene& scene) {
    const bool known = at >= scene.present - days(profile.firstDaysAgo);
    const bool over = profile.lastDaysAgo > 0 && at >= scene.present - days(profile.lastDaysAgo);
    return known && !over;
}

double chanceOfHour(const DemoHabit& habit, Moment local) {
    const auto day = floor<days>(local);
    const weekday dayOfWeek(day);
    const bool isWeekend = dayOfWeek == Saturday || dayOfWeek == Sunday;
    const auto hour = static_cast<std::size_t>(duration_cast<hours>(local - day).count());
    return habit.tenths[hour] / 10.0 * (isWeekend ? habit.weekend : habit.weekday);
}

/** What one day or hour has in store: the same for everybody who asks. */
DemoRandom fateOf(std::uint64_t seed, std::int64_t dayOrHour) {
    return DemoRandom(DemoRandom::seedFrom(seed, static_cast<std::uint64_t>(dayOrHour)));
}

/** Of the user's clock, which may run half an hour beside that of UTC. */
Moment endOfHour(Moment at, const DemoScene& scene) {
    return floor<hours>(at + scene.utcOffset) + hours(1) - scene.utcOffset;
}

std::optional<Moment> nextUse(const DemoProfile& profile, Moment from, const DemoScene& scene) {
    const Moment limit = from + searchLimit;
    for (Moment at = from; at < limit; at = endOfHour(at, scene)) {
        if (demoIntensity(profile, at, scene) > 0) {
            return at;
        }
    }
    return std::nullopt;
}

}  // namespace

double demoIntensity(const DemoProfile& profile, Moment at, const DemoScene& scene) {
    if (!isInstalled(profile, at, scene)) {
        return 0;
    }
    const Moment local = at + scene.utcOffset;
    double chance = chanceOfHour(profile.habit, local) * profile.keenness;
    if (isLive(at, scene)) {
        chance = std::max(chance, watchedChance);
    }
    const auto profileSeed = DemoRandom::seedFrom(scene.seed, profile.path);
    DemoRandom hour = fateOf(profileSeed, floor<hours>(local).time_since_epoch().count());
    if (hour.uniform() >= chance) {
        return 0;
    }
    DemoRandom day = fateOf(scene.seed, floor<days>(local).time_since_epoch().count());
    return hour.between(0.4, 1.6) * day.between(0.6, 1.4);
}

std::optional<Moment> demoOpening(const DemoProfile& profile, Moment from, seconds pause,
                                  const DemoScene& scene) {
    for (auto use = nextUse(profile, from, scene); use; use = nextUse(profile, from, scene)) {
        from = endOfHour(*use, scene);
        if (*use + pause < from) {
            return *use + pause;
        }
        pause -= from - *use;
    }
    return std::nullopt;
}

double demoStretch(const DemoFlow& flow, Moment at, const DemoScene& scene) {
    if (isLive(at, scene)) {
        return 1;
    }
    const double cycle = duration<double>(flow.life + flow.pause) / duration<double>(shortestCycleOfYear);
    return std::max(1.0, 1 / cycle);
}

DemoWave::DemoWave(double swing, DemoRandom& random) {
    // The weights add up to 1: at full swing the rate just touches zero. Periods are in seconds.
    constexpr std::array weights{0.5, 0.3, 0.2};
    const std::array periods{random.between(4, 12), random.between(15, 45), random.between(60, 240)};
    for (std::size_t i = 0; i < m_Parts.size(); ++i) {
        const double frequency = 2 * std::numbers::pi / periods[i];
        const double phase = random.between(0, 2 * std::numbers::pi);
        m_Parts[i] = {swing * weights[i] / frequency, frequency, phase, std::cos(phase)};
    }
}

double DemoWave::progress(double elapsed) const {
    double seconds = elapsed;
    for (const Part& part : m_Parts) {
        seconds += part.amplitude * (part.cosineAtZero - std::cos(part.frequency * elapsed + part.phase));
    }
    return seconds;
}

}  // namespace service
