// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <string_view>

namespace service {

/**
 * Random numbers that are the same with every compiler and library, unlike the standard distributions. The
 * generator is SplitMix64: any two seeds give unrelated sequences and starting one costs nothing, so that
 * "the fate of this hour" can be a generator of its own.
 */
class DemoRandom {
  public:
    explicit DemoRandom(std::uint64_t seed) : m_State(seed) {}

    std::uint64_t next() {
        m_State += 0x9e3779b97f4a7c15;
        std::uint64_t mixed = m_State;
        mixed = (mixed ^ (mixed >> 30)) * 0xbf58476d1ce4e5b9;
        mixed = (mixed ^ (mixed >> 27)) * 0x94d049bb133111eb;
        return mixed ^ (mixed >> 31);
    }

    /** At least 0 and below 1. */
    double uniform() { return static_cast<double>(next() >> 11) * 0x1p-53; }

    double between(double low, double high) { return low + uniform() * (high - low); }

    /** At least 0 and below `limit`, which is 1 or more. */
    int below(int limit) { return static_cast<int>(uniform() * limit); }

    /** As waiting times and sizes are spread, cut off at six times the mean. */
    double exponential(double mean) { return mean * std::min(-std::log(1 - uniform()), 6.0); }

    /** A seed that depends on both. */
    static std::uint64_t seedFrom(std::uint64_t seed, std::uint64_t detail) {
        return DemoRandom(DemoRandom(seed).next() ^ detail).next();
    }

    static std::uint64_t seedFrom(std::uint64_t seed, std::string_view detail) {
        for (const char letter : detail) {
            seed = seedFrom(seed, static_cast<unsigned char>(letter));
        }
        return seed;
    }

  private:
    std::uint64_t m_State;
};

}  // namespace service
