// SPDX-License-Identifier: GPL-3.0-or-later

// What a client that charts a year notices of another that sorts every connection there is, while a thousand new ones
// a second are written; and what memory the daemon's side takes meanwhile.
// Usage: cursors_bench FILE, as connections_bench has left it.

#include <malloc.h>
#include <netinet/tcp.h>
#include <sys/epoll.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "bench/PeakMemory.h"
#include "protocol/DaemonConnectionInfo.h"
#include "protocol/DaemonCreateConnectionsIteratorReply.h"
#include "protocol/DaemonCreateConnectionsIteratorRequest.h"
#include "protocol/DaemonGetConnectionInfoRequest.h"
#include "protocol/DaemonGetCountConnectionsReply.h"
#include "protocol/DaemonGetCountConnectionsRequest.h"
#include "protocol/DaemonSetConnectionsIteratorParametersRequest.h"
#include "protocol/DaemonTotalReceivedBytesRequest.h"
#include "protocol/DeamonTotalReceivedBytesReply.h"
#include "service/server/LocalCalendar.h"
#include "service/server/Poller.h"
#include "service/server/Server.h"
#include "service/server/SocketOptions.h"
#include "service/store/StoreWriter.h"
#include "service/traffic/Clock.h"

namespace {

using namespace service;
using namespace std::chrono;

constexpr int newConnectionsPerSecond = 1000;
constexpr int chartSteps = 210;
constexpr auto year = days(365);

[[noreturn]] void giveUp(const std::string& reason) {
    std::fprintf(stderr, "%s\n", reason.c_str());
    std::exit(1);
}

double toMs(steady_clock::duration duration) {
    return std::chrono::duration<double, std::milli>(duration).count();
}

/** Each connection moves bytes in the second in which it opens and ends in the next. */
class Flood : public TrafficSource {
  public:
    std::string_view name() const override { return "flood"; }

    std::vector<TrafficSample> poll(Moment now) override {
        for (TrafficSample& sample : m_Open) {
            sample.moved = {};
            sample.closed = true;
        }
        std::vector<TrafficSample> samples = std::move(m_Open);
        m_Open.clear();
        for (int i = 0; i < newConnectionsPerSecond; ++i) {
            TrafficSample sample;
            sample.connectionKey = ++m_LastKey;
            sample.application = m_Application;
            sample.socketProtocol = 6;
            sample.opened = now;
            sample.moved = {1000, 100};
            sample.remote.port = static_cast<std::uint16_t>(m_LastKey);
            m_Open.push_back(sample);
        }
        samples.insert(samples.end(), m_Open.begin(), m_Open.end());
        return samples;
    }

  private:
    std::shared_ptr<const ApplicationIdentity> m_Application =
        std::make_shared<ApplicationIdentity>(ApplicationIdentity{.path = "/usr/bin/flood", .name = "Flood"});
    std::vector<TrafficSample> m_Open;
    std::uint64_t m_LastKey = 0;
};

/** A front end's end of the link that waits for each answer without a pause. */
class Client {
  public:
    explicit Client(const ListenAddress& address) : m_Socket(::socket(AF_INET, SOCK_STREAM, 0)) {
        sockaddr_in where{};
        where.sin_family = AF_INET;
        where.sin_addr = address.address;
        where.sin_port = htons(address.port);
        if (::connect(m_Socket.get(), reinterpret_cast<const sockaddr*>(&where), sizeof where) != 0) {
            giveUp("cannot connect");
        }
        setSocketOption(m_Socket.get(), IPPROTO_TCP, TCP_NODELAY, 1);
    }

    template <class Request>
    void tell(const Request& request) {
        MessageHeader header;
        BinarySerializer body;
        request.SerializeTo(body);
        header.messageId = 1;
        header.messageType = Request::MessageType;
        header.dataSize = body.GetCurrentDataSize();
        BinarySerializer frame;
        header.SerializeTo(frame);
        std::vector<std::uint8_t> bytes(
            static_cast<std::size_t>(frame.GetCurrentDataSize() + header.dataSize));
        const int headSize = frame.GetCurrentDataSize();
        frame.ReadData(bytes.data(), headSize);
        if (header.dataSize > 0) {
            body.ReadData(bytes.data() + headSize, header.dataSize);
        }
        if (::send(m_Socket.get(), bytes.data(), bytes.size(), MSG_NOSIGNAL) !=
            static_cast<ssize_t>(bytes.size())) {
            giveUp("the server is gone");
        }
    }

    template <class Reply, class Request>
    Reply ask(const Request& request) {
        tell(request);
        MessageHeader header;
        BinarySerializer head;
        receive(20, head);
        header.UnserializeFrom(head);
        BinarySerializer body;
        receive(static_cast<std::size_t>(header.dataSize), body);
        Reply reply;
        reply.UnserializeFrom(body);
        return reply;
    }

  private:
    void receive(std::size_t size, BinarySerializer& serializer) {
        std::vector<std::uint8_t> bytes(size);
        if (::recv(m_Socket.get(), bytes.data(), size, MSG_WAITALL) != static_cast<ssize_t>(size)) {
            giveUp("the server is gone");
        }
        serializer.WriteData(bytes.data(), static_cast<int>(size));
    }

    FileDescriptor m_Socket;
};

struct Latency {
    std::vector<double> ms;

    void print(const char* what) {
        std::ranges::sort(ms);
        std::printf("%-28s %7zu requests, median %7.2f ms, 99.9 %% %7.2f ms, longest %7.2f ms\n", what,
                    ms.size(), ms[ms.size() / 2], ms[ms.size() * 999 / 1000], ms.back());
    }

    template <class Action>
    void time(Action action) {
        const auto start = steady_clock::now();
        action();
        ms.push_back(toMs(steady_clock::now() - start));
    }
};

/** Charts of a year, one after the other, while `goesOn`. */
Latency chart(const ListenAddress& address, const std::atomic<bool>& goesOn) {
    Client client(address);
    Latency latency;
    while (goesOn) {
        const Moment now = systemClock();
        for (int i = 0; i < chartSteps; ++i) {
            DaemonTotalReceivedBytesRequest request;
            request.toTime =
                LocalCalendar::fromMoment(now - duration_cast<seconds>(year) * (chartSteps - i) / chartSteps);
            request.socketProtocol = -1;
            latency.time([&] { client.ask<DeamonTotalReceivedBytesReply>(request); });
        }
        std::this_thread::sleep_for(milliseconds(50));
    }
    return latency;
}

/** Sorts everything by each field in both directions and then reads rows from all over the list. */
void sortEverything(const ListenAddress& address) {
    Client client(address);
    const auto cursor =
        client.ask<DaemonCreateConnectionsIteratorReply>(DaemonCreateConnectionsIteratorRequest());
    constexpr const char* names[] = {"start", "end", "direction", "received", "sent", "local", "remote"};
    for (int field = 0; field < 7; ++field) {
        for (const int direction : {1, 0}) {
            DaemonSetConnectionsIteratorParametersRequest request;
            request.iteratorId = cursor.iteratorId;
            request.startTime = LocalCalendar::fromMoment(Moment{});
            request.endTime = LocalCalendar::fromMoment(systemClock());
            request.applicationId = request.socketProtocol = -1;
            request.sortField = field;
            request.sortDirection = direction;
            client.tell(request);
            DaemonGetCountConnectionsRequest countRequest;
            countRequest.iteratorId = cursor.iteratorId;
            Latency count;
            int rows = 0;
            count.time([&] { rows = client.ask<DaemonGetCountConnectionsReply>(countRequest).count; });
            Latency row;
            for (int i = 0; i < 1000; ++i) {
                DaemonGetConnectionInfoRequest rowRequest;
                rowRequest.iteratorId = cursor.iteratorId;
                rowRequest.index = static_cast<int>(std::int64_t{rows} * i / 1000);
                row.time([&] { client.ask<DaemonConnectionInfo>(rowRequest); });
            }
            std::printf("%d rows by %s, %s: %.0f ms\n", rows, names[field],
                        direction == 1 ? "ascending" : "descending", count.ms[0]);
            row.print("  rows");
        }
    }
}

/** Everything but the store and the writer is as in the daemon; serves until a byte comes from `ended`. */
void serve(const std::string& path, Listener listener, int ended) {
    std::string error;
    const auto store = Store::open(path, error);
    std::optional<LedgerState> state = store ? store->load(systemClock()) : std::nullopt;
    auto history = HistoryReader::open(path, error);
    auto historyOfOrders = HistoryReader::open(path, error);
    if (!state || !history || !historyOfOrders) {
        giveUp(error);
    }
    EventLoop loop;
    const TextOrder textOrder;
    Ledger ledger(std::move(*state));
    ConnectionOrders orders(std::move(historyOfOrders));
    Flood flood;
    StoreWriter writer(ledger, *store, [](bool) {});
    Poller poller(flood, ledger, [] {});
    HistoryCleaner cleaner(ledger, {.now = systemClock, .wipe = [] {}, .tellClients = [](DaemonEvent) {}});
    Server server(loop, std::move(listener),
                  {.ledger = ledger,
                   .history = *history,
                   .orders = orders,
                   .cleaner = cleaner,
                   .textOrder = textOrder,
                   .now = systemClock,
                   .configurationChanged = [] {}});
    loop.watch(ended, EPOLLIN, [&loop](std::uint32_t) { loop.stop(); });
    loop.run();
    std::printf("peak memory of the daemon's side: %.1f MB\n", bench::peakMemory());
}

void runClients(const ListenAddress& address) {
    std::atomic<bool> goesOn = true;
    Latency alone;
    Latency beside;
    std::thread first([&] { alone = chart(address, goesOn); });
    std::this_thread::sleep_for(seconds(5));
    goesOn = false;
    first.join();
    goesOn = true;
    std::thread second([&] { beside = chart(address, goesOn); });
    sortEverything(address);
    goesOn = false;
    second.join();
    alone.print("totals");
    beside.print("totals beside sorting");
    std::printf("the longest total takes %.1f times as long beside sorting\n",
                beside.ms.back() / alone.ms.back());
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: cursors_bench FILE\n");
        return 2;
    }
    std::setvbuf(stdout, nullptr, _IOLBF, 0);
    ::mallopt(M_MMAP_THRESHOLD, 1 << 20);  // as in the daemon
    std::string error;
    std::optional<Listener> listener = Listener::open({.port = 0}, error);
    int pipe[2];
    if (!listener || ::pipe(pipe) != 0) {
        giveUp(error);
    }
    const ListenAddress address = listener->address();
    if (::fork() == 0) {
        ::prctl(PR_SET_PDEATHSIG, SIGKILL);
        runClients(address);
        std::fflush(stdout);
        ::_exit(::write(pipe[1], "", 1) == 1 ? 0 : 1);
    }
    serve(argv[1], std::move(*listener), pipe[0]);
    ::wait(nullptr);
    return 0;
}
