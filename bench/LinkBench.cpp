// SPDX-License-Identifier: GPL-3.0-or-later

// How fast records are encoded and decoded, and what a request costs alone and in a pipeline.
// Usage: link_bench ADDRESS:PORT of a daemon with at least one application; see bench/run.

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <string>
#include <vector>

#include "libs/utils/src/StringUtils.h"
#include "net/IPv4SocketAddress.h"
#include "protocol/DaemonApplicationInfo.h"
#include "protocol/DaemonConnectionInfo.h"
#include "protocol/DaemonCreateApplicationIteratorReply.h"
#include "protocol/DaemonCreateApplicationIteratorRequest.h"
#include "protocol/DaemonGetApplicationInfoRequest.h"
#include "protocol/DaemonGetCountApplicationsReply.h"
#include "protocol/DaemonGetCountApplicationsRequest.h"
#include "protocol/LLNC_ClientConnection.h"

namespace {

using Clock = std::chrono::steady_clock;

constexpr double pollIntervalMs = 5;

double milliseconds(Clock::duration duration) {
    return std::chrono::duration<double, std::milli>(duration).count();
}

/** Median time of `action` over `rounds` calls. */
double medianMs(int rounds, const std::function<void()>& action) {
    std::vector<double> times;
    for (int i = 0; i < rounds; ++i) {
        const auto start = Clock::now();
        action();
        times.push_back(milliseconds(Clock::now() - start));
    }
    std::nth_element(times.begin(), times.begin() + rounds / 2, times.end());
    return times[rounds / 2];
}

/** The baseline: the bytes of a record copied in one piece into a fresh buffer and out of it. */
void copyBytes(const std::string& bytes) {
    BinarySerializer buffer;
    std::string out(bytes.size(), '\0');
    buffer.WriteCopy(bytes.data(), static_cast<long>(bytes.size()));
    buffer.Read(out.data(), static_cast<long>(out.size()));
}

template <class Record>
void benchCodec(const char* name, const Record& record) {
    constexpr int batch = 20000;
    const auto roundTrip = [&] {
        for (int i = 0; i < batch; ++i) {
            BinarySerializer buffer;
            Record back;
            if (!record.SerializeTo(buffer) || !back.UnserializeFrom(buffer)) {
                std::abort();
            }
        }
    };
    BinarySerializer sample;
    record.SerializeTo(sample);
    std::string bytes(sample.GetCurrentDataSize(), '\0');
    sample.Read(bytes.data(), static_cast<long>(bytes.size()));
    const double codec = medianMs(15, roundTrip);
    const double baseline = medianMs(15, [&] {
        for (int i = 0; i < batch; ++i) {
            copyBytes(bytes);
        }
    });
    std::printf("%-24s %9.0f records/s encoded and decoded; %.1f times a plain copy of its %zu bytes\n", name,
                batch / codec * 1000, codec / baseline, bytes.size());
}

class Cursor {
  public:
    explicit Cursor(LLNC_ClientConnection& connection) : m_Connection(connection) {
        DaemonCreateApplicationIteratorReply created;
        m_Connection.SendMessage(DaemonCreateApplicationIteratorRequest(), created, 0);
        m_Id = created.iteratorId;
        DaemonGetCountApplicationsRequest request;
        request.iteratorId = m_Id;
        DaemonGetCountApplicationsReply reply;
        m_Connection.SendMessage(request, reply, 0);
        m_Count = reply.count;
    }

    int count() const { return m_Count; }

    void fetchPipelined(int rows) {
        std::vector<int> messageIds;
        for (int i = 0; i < rows; ++i) {
            messageIds.push_back(m_Connection.SendMessage(rowRequest(i), 0));
        }
        for (const int messageId : messageIds) {
            DaemonApplicationInfo info;
            check(m_Connection.WaitReply(messageId, info));
        }
    }

    void fetchOneByOne(int rows) {
        for (int i = 0; i < rows; ++i) {
            DaemonApplicationInfo info;
            check(m_Connection.SendMessage(rowRequest(i), info, 0));
        }
    }

  private:
    static void check(bool isAnswered) {
        if (!isAnswered) {
            std::fprintf(stderr, "a row was not answered\n");
            std::exit(1);
        }
    }

    DaemonGetApplicationInfoRequest rowRequest(int i) const {
        DaemonGetApplicationInfoRequest request;
        request.iteratorId = m_Id;
        request.index = i % m_Count;
        return request;
    }

    LLNC_ClientConnection& m_Connection;
    int m_Id = -1;
    int m_Count = 0;
};

void benchRequests(LLNC_ClientConnection& connection) {
    Cursor cursor(connection);
    if (cursor.count() < 1) {
        std::fprintf(stderr, "the daemon has no applications\n");
        std::exit(1);
    }
    const double alone = medianMs(100, [&] { cursor.fetchOneByOne(1); });
    const double fortyAlone = medianMs(5, [&] { cursor.fetchOneByOne(40); });
    const double forty = medianMs(100, [&] { cursor.fetchPipelined(40); });
    const double thousand = medianMs(20, [&] { cursor.fetchPipelined(1000); });
    std::printf("one request              %9.2f ms (median of 100)\n", alone);
    std::printf("40 rows one by one       %9.2f ms\n", fortyAlone);
    std::printf("40 rows pipelined        %9.2f ms = %.1f poll intervals, 1/%.0f of one by one\n", forty,
                forty / pollIntervalMs, fortyAlone / forty);
    std::printf("1,000 requests pipelined %9.2f ms = %.1f times 40 rows\n", thousand, thousand / forty);
}

}  // namespace

int main(int argc, char** argv) {
    const std::string target = argc == 2 ? argv[1] : "";
    const std::size_t colon = target.find(':');
    if (colon == std::string::npos) {
        std::fprintf(stderr, "usage: link_bench ADDRESS:PORT\n");
        return 2;
    }
    DaemonApplicationInfo application;
    application.name = "Web Browser";
    application.fullPath = "/usr/lib/browser/browser";
    benchCodec("DaemonApplicationInfo", application);
    benchCodec("DaemonConnectionInfo", DaemonConnectionInfo());

    const IpAddress address = stringToIp(target.substr(0, colon), IpAddress::IPv4);
    const auto port = static_cast<unsigned short>(std::atoi(target.c_str() + colon + 1));
    LLNC_ClientConnection connection(Net::IPv4SocketAddress(Net::IPv4Address(address.address.data()), port));
    if (!connection.GetSocket().isValid()) {
        std::fprintf(stderr, "no daemon answers on %s\n", target.c_str());
        return 1;
    }
    benchRequests(connection);
    return 0;
}
