// SPDX-License-Identifier: GPL-3.0-or-later
#include "service/capture/bpf/BpfPrograms.h"

#include <bpf/bpf.h>
#include <bpf/libbpf.h>
#include <errno.h>
#include <sys/random.h>
#include <unistd.h>

#include <array>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <string_view>
#include <utility>
#include <vector>

#include "capture.skel.h"
#include "service/capture/bpf/ControlGroups.h"
#include "service/capture/bpf/Refusal.h"
#include "service/log/Log.h"

namespace service {

namespace {

/**
 * What the library says of a failure comes as text for a person; the first line is the one with the reason.
 */
std::string firstWarning;

int keepFirstWarning(libbpf_print_level level, const char* format, va_list arguments) {
    if (level == LIBBPF_WARN && firstWarning.empty()) {
        std::array<char, 256> text{};
        std::vsnprintf(text.data(), text.size(), format, arguments);
        firstWarning = text.data();
        firstWarning.resize(std::min(firstWarning.find('\n'), firstWarning.size()));
    }
    return 0;
}

std::string reason() {
    return whyRefused(errno, firstWarning);
}

/** Reads records from an iterator until it has no more. False with errno set when it failed in between. */
template <class Record, class Visit>
bool readRecords(const bpf_link* table, const Visit& visit) {
    const FileDescriptor stream(bpf_iter_create(bpf_link__fd(table)));
    if (!stream.isValid()) {
        return false;
    }
    std::vector<Record> records(32 * 1024 / sizeof(Record));  // the kernel has eight pages at most
    std::size_t filled = 0;                                   // bytes; a record may come in two pieces
    for (;;) {
        char* const start = reinterpret_cast<char*>(records.data());
        const ssize_t length = ::read(stream.get(), start + filled, records.size() * sizeof(Record) - filled);
        if (length < 0 && errno == EAGAIN) {
            continue;  // it had nothing to tell of a million of entries, and wants to be asked for the others
        }
        if (length <= 0) {
            return length == 0;
        }
        filled += static_cast<std::size_t>(length);
        const std::size_t whole = filled / sizeof(Record);
        for (std::size_t i = 0; i < whole; ++i) {
            visit(records[i]);
        }
        filled -= whole * sizeof(Record);
        std::memmove(start, start + whole * sizeof(Record), filled);
    }
}

/** How many entries a table has; the count of one that changes meanwhile may be off. */
std::uint64_t entriesOf(const bpf_map* table) {
    constexpr std::size_t batch = 4096;
    std::vector<char> keys(batch * bpf_map__key_size(table));
    std::vector<char> values(batch * bpf_map__value_size(table));
    std::uint64_t sum = 0;
    __u64 position = 0;
    for (void* from = nullptr;; from = &position) {
        __u32 count = batch;
        const int failed = bpf_map_lookup_batch(bpf_map__fd(table), from, &position, keys.data(),
                                                values.data(), &count, nullptr);
        sum += failed == 0 || errno == ENOENT ? count : 0;
        if (failed != 0) {
            return sum;
        }
    }
}

void addTo(amount& sum, const amount& more) {
    sum.wire += more.wire;
    sum.payload += more.payload;
}

bpf_link* attachTable(const bpf_program* reader, const bpf_map* table) {
    bpf_iter_link_info info{};
    info.map.map_fd = static_cast<__u32>(bpf_map__fd(table));
    bpf_iter_attach_opts options{};
    options.sz = sizeof(options);
    options.link_info = &info;
    options.link_info_len = sizeof(info);
    return bpf_program__attach_iter(reader, &options);
}

}  // namespace

void BpfPrograms::Unload::operator()(capture_bpf* skeleton) const {
    capture_bpf__destroy(skeleton);
}

void BpfPrograms::Detach::operator()(bpf_link* link) const {
    bpf_link__destroy(link);
}

void BpfPrograms::Free::operator()(ring_buffer* ring) const {
    ring_buffer__free(ring);
}

std::unique_ptr<BpfPrograms> BpfPrograms::load(const KernelFeatures& features, std::string& error) {
    firstWarning.clear();
    libbpf_set_print(keepFirstWarning);
    capture_bpf* const skeleton = capture_bpf__open();
    if (skeleton == nullptr) {
        error = "the programs for the kernel can't be opened: " + reason();
        return nullptr;
    }
    std::unique_ptr<BpfPrograms> programs(new BpfPrograms(skeleton));
    programs->leaveOut(features);
    if (capture_bpf__load(skeleton) != 0) {
        error = reason();
        return nullptr;
    }
    bpf_test_run_opts once{};
    once.sz = sizeof(once);
    if (bpf_prog_test_run_opts(bpf_program__fd(skeleton->progs.note_root), &once) != 0) {
        error = "the programs can't be run: " + reason();
        return nullptr;
    }
    if (!programs->attach(error) || !programs->openTables(error)) {
        return nullptr;
    }
    return programs;
}

BpfPrograms::BpfPrograms(capture_bpf* skeleton) : m_Skeleton(skeleton) {
    __u64 seed = 0;
    [[maybe_unused]] const ssize_t filled = ::getrandom(&seed, sizeof(seed), 0);
    m_Skeleton->rodata->path_seed = seed;
}

BpfPrograms::~BpfPrograms() = default;

void BpfPrograms::leaveOut(const KernelFeatures& features) {
    if (!features.tellsTransfers) {
        logLine(
            "bpf: this kernel does not tell who reads and writes; connections that one process accepts and "
            "another one serves are counted for the first");
    }
    const auto& programs = m_Skeleton->progs;
    bpf_program__set_autoload(programs.on_send, features.tellsTransfers);
    bpf_program__set_autoload(programs.on_receive, features.tellsTransfers);
    bpf_program__set_autoload(programs.on_drop, features.tellsReceiver);
    bpf_program__set_autoload(programs.on_untold_drop, !features.tellsReceiver);
}

bool BpfPrograms::attach(std::string& error) {
    const FileDescriptor group = openRootControlGroup(error);
    if (!group.isValid()) {
        return false;
    }
    const auto& programs = m_Skeleton->progs;
    // Owners first, then a look at the sockets that are older, then the counting: so nothing is counted
    // before its owner can be known.
    const bool attached =
        attachEach(group,
                   {programs.on_create, programs.on_release, programs.on_connect4, programs.on_connect6,
                    programs.on_sendmsg4, programs.on_sendmsg6, programs.on_state, programs.on_destroy,
                    programs.on_nested_destroy, programs.on_send, programs.on_receive}) &&
        scanSockets() &&
        attachEach(group, {programs.on_egress, programs.on_ingress, programs.on_drop, programs.on_untold_drop,
                           programs.on_consume, programs.on_transmit});
    if (!attached) {
        error = "the programs can't be attached: " + reason();
    }
    return attached;
}

bool BpfPrograms::attachEach(const FileDescriptor& group,
                             std::initializer_list<const bpf_program*> programs) {
    for (const bpf_program* const program : programs) {
        if (!bpf_program__autoload(program)) {
            continue;
        }
        const bool isOfGroup = std::string_view(bpf_program__section_name(program)).starts_with("cgroup");
        m_Attached.emplace_back(isOfGroup ? bpf_program__attach_cgroup(program, group.get())
                                          : bpf_program__attach(program));
        if (!m_Attached.back()) {
            return false;
        }
    }
    return true;
}

bool BpfPrograms::scanSockets() const {
    const Link scan(bpf_program__attach(m_Skeleton->progs.scan));
    for (const __u32 pass : {SCAN_OWNERS, SCAN_DIRECTIONS}) {
        m_Skeleton->bss->scan_pass = pass;
        if (!scan ||
            !readRecords<char>(scan.get(), [](char) {})) {  // it works by being read, and writes nothing
            return false;
        }
    }
    return true;
}

bool BpfPrograms::openTables(std::string& error) {
    const auto& maps = m_Skeleton->maps;
    const auto& programs = m_Skeleton->progs;
    m_Sockets.reset(attachTable(programs.read_sockets, maps.sockets));
    m_Flows.reset(attachTable(programs.read_flows, maps.flows));
    m_Rests.reset(attachTable(programs.read_flows, maps.rests));
    m_Handshakes.reset(attachTable(programs.read_handshakes, maps.handshakes));
    const ring_buffer_sample_fn onEvent = [](void* self, void* record, std::size_t) {
        static_cast<BpfPrograms*>(self)->m_EventVisitor(*static_cast<const flow*>(record));
        return 0;
    };
    m_Events.reset(ring_buffer__new(bpf_map__fd(maps.events), onEvent, this, nullptr));
    const bool open = m_Sockets && m_Flows && m_Rests && m_Handshakes && m_Events;
    if (!open) {
        error = "the kernel's tables can't be read: " + reason();
    }
    return open;
}

void BpfPrograms::readEvents(const FlowVisitor& visit) {
    m_EventVisitor = visit;
    ring_buffer__consume(m_Events.get());
}

void BpfPrograms::readTables(const FlowVisitor& visit, bool isLast) {
    m_Skeleton->bss->occupancy = {};
    m_ReadingFailure.clear();
    m_Skeleton->bss->is_last_reading = isLast;
    readFlows(m_Sockets, visit);
    readFlows(m_Flows, visit);
    forgetHandshakes();
    readFlows(m_Rests, visit);
    m_Occupancy = m_Skeleton->bss->occupancy;
}

template <class Record, class Visit>
void BpfPrograms::readTable(const Link& table, const Visit& visit) {
    if (!readRecords<Record>(table.get(), visit)) {
        m_ReadingFailure = std::strerror(errno);
    }
}

void BpfPrograms::readFlows(const Link& table, const FlowVisitor& visit) {
    std::vector<flow> ended;
    readTable<flow>(table, [&](const flow& reported) {
        if (reported.ended != FLOW_LIVES && &table != &m_Sockets) {
            ended.push_back(reported);
        } else {
            visit(reported);
        }
    });
    for (const flow& last : ended) {
        takeOut(last, visit);
    }
}

void BpfPrograms::takeOut(const flow& ended, const FlowVisitor& visit) {
    tracked_flow entry{};
    if (ended.socket == 0) {
        const rest_key key{ended.executable, ended.protocol, ended.domain, ended.direction};
        bpf_map__lookup_and_delete_elem(m_Skeleton->maps.rests, &key, sizeof(key), &entry, sizeof(entry), 0);
    } else {
        flow_key key{};
        key.socket = ended.socket;
        std::memcpy(key.remote, ended.ends.remote, sizeof(key.remote));
        key.remote_port = ended.ends.remote_port;
        key.protocol = ended.protocol;
        key.version = ended.ends.version;
        bpf_map__lookup_and_delete_elem(m_Skeleton->maps.flows, &key, sizeof(key), &entry, sizeof(entry), 0);
    }
    flow last = ended;
    if (entry.flow.id == ended.id) {
        addTo(last.received, entry.flow.received);
        addTo(last.sent, entry.flow.sent);
    } else if (entry.flow.id != 0) {  // it passed into other hands this very moment
        entry.flow.ended = FLOW_ENDED;
        visit(entry.flow);
    }
    visit(last);
}

void BpfPrograms::forgetHandshakes() {
    std::vector<handshake_key> old;
    readTable<handshake_key>(m_Handshakes, [&](const handshake_key& key) { old.push_back(key); });
    for (const handshake_key& key : old) {
        handshake last{};
        bpf_map__lookup_and_delete_elem(m_Skeleton->maps.handshakes, &key, sizeof(key), &last, sizeof(last),
                                        0);
        // Of packets since the reading, milliseconds ago.
        __atomic_fetch_add(&m_Skeleton->bss->losses.bytes, last.received.wire + last.sent.wire,
                           __ATOMIC_RELAXED);
    }
}

std::optional<executable> BpfPrograms::findExecutable(__u64 hash) const {
    executable found{};
    const int failed =
        bpf_map__lookup_elem(m_Skeleton->maps.executables, &hash, sizeof(hash), &found, sizeof(found), 0);
    return failed == 0 ? std::optional(found) : std::nullopt;
}

void BpfPrograms::takeExecutables(const std::function<void(__u64 hash, const executable&)>& visit) {
    const bpf_map* const table = m_Skeleton->maps.executables;
    __u64 hash = 0;
    while (bpf_map__get_next_key(table, nullptr, &hash, sizeof(hash)) == 0) {
        if (const std::optional<executable> found = findExecutable(hash)) {
            visit(hash, *found);
        }
        if (bpf_map__delete_elem(table, &hash, sizeof(hash), 0) != 0) {
            return;
        }
        __atomic_fetch_sub(&m_Skeleton->bss->names, 1, __ATOMIC_RELAXED);
    }
}

const losses& BpfPrograms::countedLosses() const {
    return m_Skeleton->bss->losses;
}

__u64 BpfPrograms::keptExecutables() const {
    return __atomic_load_n(&m_Skeleton->bss->names, __ATOMIC_RELAXED);
}

std::uint64_t BpfPrograms::countPasts() const {
    return entriesOf(m_Skeleton->maps.pasts);
}

std::uint64_t BpfPrograms::countMissedCalls() const {
    std::uint64_t sum = 0;
    bpf_program* program = nullptr;
    bpf_object__for_each_program(program, m_Skeleton->obj) {
        bpf_prog_info info{};
        __u32 size = sizeof(info);
        const bool isTold = bpf_program__autoload(program) &&
                            bpf_obj_get_info_by_fd(bpf_program__fd(program), &info, &size) == 0;
        sum += isTold ? info.recursion_misses : 0;
    }
    return sum;
}

}  // namespace service
