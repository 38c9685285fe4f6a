// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <unordered_map>
#include <vector>

#include "service/capture/bpf/BpfPrograms.h"
#include "service/capture/bpf/ExecutableNames.h"
#include "service/traffic/TrafficSource.h"

namespace service {

/**
 * All IP traffic of the machine's sockets, in every network namespace, counted in the kernel packet by
 * packet.
 *
 * A flow with a single peer is a connection; what an executable moved besides is one with empty addresses. A
 * byte between two programs of this machine is counted twice: as sent by the one and as received by the
 * other.
 */
class BpfSource : public TrafficSource {
  public:
    /** Null with the reason in `error` when this kernel, or this process, may not. */
    static std::unique_ptr<BpfSource> create(std::string& error,
                                             const KernelFeatures& features = KernelFeatures::ofThisKernel());

    std::string_view name() const override { return "bpf"; }
    std::vector<TrafficSample> poll(Moment now) override { return read(now, false); }
    std::vector<TrafficSample> pollLast(Moment now) override { return read(now, true); }
    std::vector<StatusLine> status() const override;

  private:
    /** As of the latest poll. */
    struct Health {
        losses lost{};
        std::uint64_t missedCalls = 0;
        occupancy tables{};
        std::uint64_t executables = 0;  ///< that the kernel keeps
        std::string readingFailure;     ///< of the tables; mostly ""
    };

    explicit BpfSource(std::unique_ptr<BpfPrograms> programs);

    std::vector<TrafficSample> read(Moment now, bool isLast);
    TrafficSample sampleOf(const flow& reported);
    void enter(const flow& reported);
    void enterLate(TrafficSample& sample);
    void closeQuietLate();
    void noteStatus();

    const std::unique_ptr<BpfPrograms> m_Programs;
    ExecutableNames m_Names;

    /**
     * Connections that ended before this poll, to be closed at its end: their last packets may still come.
     */
    std::unordered_map<std::uint64_t, TrafficSample> m_Closing;
    std::unordered_map<std::uint64_t, TrafficSample> m_ClosingNext;

    /** A connection for what comes after the end of another one. */
    struct Late {
        TrafficSample last;  ///< to be given when nothing comes any more
        int quietPolls = 0;
    };
    std::unordered_map<std::uint64_t, Late> m_Late;  ///< by the other one's key

    Moment m_Now;                   ///< of the poll
    std::uint64_t m_SinceBoot = 0;  ///< the same, as the kernel's programs count it, in ns
    std::uint64_t m_NextLateKey = firstLateKey;
    std::vector<TrafficSample> m_Samples;

    /** The sum of all losses from which on they are logged again: each time that it has doubled. */
    std::uint64_t m_NextLogged = 0;

    mutable std::mutex m_HealthMutex;  ///< guards what is below; only the polling thread changes it
    Health m_Health;

    static constexpr std::uint64_t firstLateKey = 1ull << 63;  ///< the kernel's own keys stay below
};

}  // namespace service
