// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <functional>
#include <initializer_list>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "service/capture/bpf/KernelFeatures.h"
#include "service/capture/bpf/records.h"
#include "service/system/FileDescriptor.h"

struct capture_bpf;
struct bpf_link;
struct bpf_program;
struct ring_buffer;

namespace service {

/**
 * The programs in the kernel and their tables: loaded and attached while this exists, and not a moment
 * longer, since the kernel itself detaches them from a process that is gone. One thread at a time.
 */
class BpfPrograms {
  public:
    using FlowVisitor = std::function<void(const flow&)>;

    /**
     * Loads and attaches all programs that a kernel with `features` can run, after a look at the sockets that are there.
     * Null with the reason in `error` when the counting ones are not among them. Takes about 0.5 s.
     */
    static std::unique_ptr<BpfPrograms> load(const KernelFeatures& features, std::string& error);

    ~BpfPrograms();
    BpfPrograms(const BpfPrograms&) = delete;
    BpfPrograms& operator=(const BpfPrograms&) = delete;

    /**
     * Visits what could not wait since the last call: flows that ended or changed hands, and late packets.
     */
    void readEvents(const FlowVisitor& visit);

    /**
     * Visits every flow that moved bytes since it was visited before, or ended by its quiet. Those whose owner is
     * not sure yet may wait for a later call, unless this is the last one.
     */
    void readTables(const FlowVisitor& visit, bool isLast);

    /** What is known of an executable; nothing when it is not, any more. */
    std::optional<executable> findExecutable(__u64 hash) const;

    /** Visits all that is known of executables, and forgets it: a program that runs again is noted again. */
    void takeExecutables(const std::function<void(__u64 hash, const executable&)>& visit);

    /** How full the tables were at the latest reading. */
    const occupancy& tableOccupancy() const { return m_Occupancy; }
    const losses& countedLosses() const;

    /** Why the latest reading of the tables brought not all of it; mostly "". */
    const std::string& readingFailure() const { return m_ReadingFailure; }

    /** How many executables the kernel has in its table, which has room for MAX_EXECUTABLES. */
    __u64 keptExecutables() const;

    /** How many flows that ended are remembered, of MAX_PASTS. Takes some ms; on any thread. */
    std::uint64_t countPasts() const;

    /** Calls that the kernel left out because they would have interrupted the same program. Some 20 us. */
    std::uint64_t countMissedCalls() const;

  private:
    struct Unload {
        void operator()(capture_bpf* skeleton) const;
    };
    struct Detach {
        void operator()(bpf_link* link) const;
    };
    struct Free {
        void operator()(ring_buffer* ring) const;
    };
    using Link = std::unique_ptr<bpf_link, Detach>;

    explicit BpfPrograms(capture_bpf* skeleton);

    void leaveOut(const KernelFeatures& features);
    bool attach(std::string& error);
    bool openTables(std::string& error);

    /** Leaves out those that were not loaded; false with errno set. */
    bool attachEach(const FileDescriptor& group, std::initializer_list<const bpf_program*> programs);
    bool scanSockets() const;
    template <class Record, class Visit>
    void readTable(const Link& table, const Visit& visit);
    void readFlows(const Link& table, const FlowVisitor& visit);

    /** Takes a flow that ended out of its table, and visits it with what it has moved to the last. */
    void takeOut(const flow& ended, const FlowVisitor& visit);
    void forgetHandshakes();

    const std::unique_ptr<capture_bpf, Unload> m_Skeleton;
    FlowVisitor m_EventVisitor;  ///< for the ring, while its events are read
    std::unique_ptr<ring_buffer, Free> m_Events;
    std::vector<Link> m_Attached;
    Link m_Sockets;
    Link m_Flows;
    Link m_Rests;
    Link m_Handshakes;
    occupancy m_Occupancy{};
    std::string m_ReadingFailure;
};

}  // namespace service
