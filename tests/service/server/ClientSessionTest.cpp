// SPDX-License-Identifier: GPL-3.0-or-later
#include "service/server/ClientSession.h"

#include <latch>
#include <optional>
#include <semaphore>

#include "protocol/MessageHeader.h"
#include "service/server/FrameScanner.h"
#include "service/server/LocalCalendar.h"
#include "tests/service/store/StoreFixture.h"

namespace service {

namespace {

/** A request's whole frame. */
template <class Request>
std::vector<std::uint8_t> requestFrame(std::int32_t messageId, const Request& request) {
    BinarySerializer body;
    request.SerializeTo(body);
    MessageHeader header;
    header.messageId = messageId;
    header.messageType = Request::MessageType;
    header.dataSize = body.GetCurrentDataSize();
    BinarySerializer frame;
    header.SerializeTo(frame);
    request.SerializeTo(frame);
    std::vector<std::uint8_t> bytes(static_cast<std::size_t>(frame.GetCurrentDataSize()));
    frame.ReadData(bytes.data(), static_cast<int>(bytes.size()));
    return bytes;
}

}  // namespace

/** Everything that a session answers from, with a clock that the test sets. */
class ClientSessionTest : public StoreFixture {
  protected:
    /** Moves bytes over a connection, without writing them to the store. */
    void move(const TrafficSample& sample) { ledger.apply({sample}, now); }

    /** Writes what changed in the ledger, as the writer does. */
    void writeHistory() { ASSERT_TRUE(store->append(ledger.takeChanges(now))); }

    SessionContext context() {
        return {.ledger = ledger,
                .history = *history,
                .orders = orders,
                .cleaner = cleaner,
                .textOrder = textOrder,
                .now = [this] { return now; },
                .configurationChanged = [] {}};
    }

    /** Has one frame served, however long its answer takes. */
    void serve(const std::vector<std::uint8_t>& frame) {
        const ScannedFrame scanned = scanFrame(frame);
        while (session.serve(scanned.header, scanned.body, outbox) == RequestRouter::Outcome::NotYet) {
            EXPECT_EQ(outbox.size(), 0u);
            m_Wakes.acquire();
        }
    }

    /** Asks and reads the answer; nothing when its body is empty. */
    template <class Reply, class Request>
    std::optional<Reply> ask(const Request& request) {
        serve(requestFrame(m_NextId, request));
        const ScannedFrame answer = scanFrame(outbox.buffer().bytes());
        EXPECT_EQ(answer.consumed, outbox.size());
        EXPECT_EQ(answer.header.replyToId, m_NextId++);
        EXPECT_EQ(answer.header.messageType, Reply::MessageType);
        BinarySerializer body;
        body.WriteData(answer.body.data(), static_cast<int>(answer.body.size()));
        outbox.buffer().take(answer.consumed);
        Reply reply;
        return reply.UnserializeFrom(body) ? std::optional(reply) : std::nullopt;
    }

    /** Sends a request that gets no answer. */
    template <class Request>
    void tell(const Request& request) {
        serve(requestFrame(m_NextId++, request));
        EXPECT_EQ(outbox.size(), 0u);
    }

    /** Asks what is asked of a cursor, in general or for one row. */
    template <class Reply, class Request>
    std::optional<Reply> askCursor(std::int32_t cursor, std::int32_t row = 0) {
        Request request;
        request.iteratorId = cursor;
        if constexpr (requires { request.index; }) {
            request.index = row;
        }
        return ask<Reply>(request);
    }

    std::int32_t newApplicationsCursor() {
        return ask<DaemonCreateApplicationIteratorReply>(DaemonCreateApplicationIteratorRequest())
            ->iteratorId;
    }
    std::int32_t newConnectionsCursor() {
        return ask<DaemonCreateConnectionsIteratorReply>(DaemonCreateConnectionsIteratorRequest())
            ->iteratorId;
    }
    std::int32_t countApplications(std::int32_t cursor) {
        return askCursor<DaemonGetCountApplicationsReply, DaemonGetCountApplicationsRequest>(cursor)->count;
    }
    std::int32_t countConnections(std::int32_t cursor) {
        return askCursor<DaemonGetCountConnectionsReply, DaemonGetCountConnectionsRequest>(cursor)->count;
    }
    auto applicationAt(std::int32_t cursor, std::int32_t row) {
        return askCursor<DaemonApplicationInfo, DaemonGetApplicationInfoRequest>(cursor, row);
    }
    auto connectionAt(std::int32_t cursor, std::int32_t row) {
        return askCursor<DaemonConnectionInfo, DaemonGetConnectionInfoRequest>(cursor, row);
    }

    /** The fields of a request for connections that every test wants: all of them, by their received bytes. */
    DaemonSetConnectionsIteratorParametersRequest byReceived(std::int32_t cursor, int direction) {
        DaemonSetConnectionsIteratorParametersRequest request;
        request.iteratorId = cursor;
        request.startTime = LocalCalendar::fromMoment(at(0));
        request.endTime = LocalCalendar::fromMoment(now + std::chrono::hours(1));
        request.applicationId = request.socketProtocol = -1;
        request.sortField = 3;
        request.sortDirection = direction;
        return request;
    }

    std::int64_t received(Moment upTo, std::int32_t protocol) {
        DaemonTotalReceivedBytesRequest request;
        request.toTime = LocalCalendar::fromMoment(upTo);
        request.socketProtocol = protocol;
        return ask<DeamonTotalReceivedBytesReply>(request)->bytes;
    }
    std::int64_t applicationSent(ApplicationId id, Moment upTo) {
        DaemonApplicationSendedBytesRequest request;
        request.applicationId = id;
        request.toTime = LocalCalendar::fromMoment(upTo);
        request.socketProtocol = -1;
        return ask<DaemonApplicationSendedBytesReply>(request)->bytes;
    }

    Moment now = at(100);
    Ledger ledger{store->load(at(0)).value()};
    std::unique_ptr<HistoryReader> history = reader();
    ConnectionOrders orders{reader(), 100};
    TextOrder textOrder;
    HistoryCleaner cleaner{ledger,
                           {.now = [this] { return now; }, .wipe = [] {}, .tellClients = [](DaemonEvent) {}}};
    std::counting_semaphore<> m_Wakes{0};
    ClientSession session{context(), [this] { m_Wakes.release(); }};
    Outbox outbox;
    std::int32_t m_NextId = 0;
};

TEST_F(ClientSessionTest, RowsHoldStillBetweenCountsWhileTheirValuesLive) {
    move(sampleOf(1, "/small", {10, 0}));
    move(sampleOf(2, "/big", {1000, 0}));
    const std::int32_t cursor = newApplicationsCursor();
    DaemonSetApplicatonsIteratorParametersRequest byReceived;
    byReceived.iteratorId = cursor;
    byReceived.sortField = 3;
    byReceived.sortDirection = 0;
    tell(byReceived);
    EXPECT_EQ(applicationAt(cursor, 0)->fullPath, "/big") << "the order is taken without a count";
    move(sampleOf(1, "/small", {5000, 0}));
    move(sampleOf(3, "/new", {1, 0}));
    EXPECT_EQ(applicationAt(cursor, 0)->fullPath, "/big");
    EXPECT_EQ(applicationAt(cursor, 1)->totalReceivedBytes, 5010);
    EXPECT_FALSE(applicationAt(cursor, 2));
    EXPECT_EQ(countApplications(cursor), 3);
    EXPECT_EQ(applicationAt(cursor, 0)->fullPath, "/small");
    byReceived.sortField = 99;
    tell(byReceived);
    EXPECT_EQ(applicationAt(cursor, 0)->fullPath, "/small") << "no such field: in the order of ids";
}

TEST_F(ClientSessionTest, TotalsComeFromTheLedgerForNowAndFromTheHistoryForThen) {
    move(sampleOf(1, "/a", {10, 20}));
    writeHistory();
    const Moment then = now;
    now += std::chrono::seconds(10);
    move(sampleOf(2, "/a", {1, 2}, false, 17));
    move(sampleOf(3, "/b", {100, 200}, false, 1));
    EXPECT_EQ(received(now, -1), 111);
    EXPECT_EQ(received(now + std::chrono::hours(24), -1), 111);
    EXPECT_EQ(received(now, 6), 10);
    EXPECT_EQ(received(now, 17), 1);
    EXPECT_EQ(received(now, 1), 0) << "neither TCP nor UDP nor all";
    EXPECT_EQ(received(then, -1), 10);
    EXPECT_EQ(received(then - std::chrono::seconds(1), -1), 0);
    EXPECT_EQ(applicationSent(1, now), 22);
    EXPECT_EQ(applicationSent(1, then), 20);
    const auto totals = ask<DaemonTotalStatisticInfo>(DaemonTotalStatisticInfoRequest());
    EXPECT_EQ(totals->totalSendedBytes, 222);
    EXPECT_EQ(totals->udpSendedBytes, 2);
    EXPECT_EQ(totals->startTime, LocalCalendar::fromMoment(at(0)));
}

TEST_F(ClientSessionTest, ConnectionsThatLiveAreUpToDate) {
    move(sampleOf(1, "/a", {10, 0}));
    move(sampleOf(2, "/b", {7, 0}, true, 17));
    writeHistory();
    move(sampleOf(1, "/a", {5, 0}));
    const std::int32_t cursor = newConnectionsCursor();
    EXPECT_EQ(countConnections(cursor), 2) << "without a filter all of them";
    tell(byReceived(cursor, 0));
    ASSERT_EQ(countConnections(cursor), 2);
    EXPECT_EQ(connectionAt(cursor, 0)->receivedBytes, 15) << "as the ledger knows it";
    EXPECT_EQ(connectionAt(cursor, 1)->receivedBytes, 7) << "as the history kept it";
    EXPECT_FALSE(connectionAt(cursor, 2));
}

TEST_F(ClientSessionTest, AListThatWasLetGoComesBackWithoutWhatIsNewer) {
    const auto open = [this](std::uint64_t from, std::uint64_t to) {
        for (std::uint64_t key = from; key <= to; ++key) {
            move(sampleOf(key, "/a", {static_cast<std::int64_t>(1000 - key), 0}));
        }
        writeHistory();
    };
    const auto newCursor = [this] {
        const std::int32_t cursor = newConnectionsCursor();
        tell(byReceived(cursor, 1));
        return cursor;
    };
    open(1, 80);
    const std::int32_t first = newCursor();
    const std::int32_t second = newCursor();
    EXPECT_EQ(countConnections(first), 80);
    EXPECT_EQ(countConnections(second), 80) << "there is memory for one of them";
    open(81, 90);
    EXPECT_EQ(connectionAt(first, 0)->receivedBytes, 920);
    EXPECT_EQ(connectionAt(second, 79)->receivedBytes, 999);
    EXPECT_FALSE(connectionAt(first, 80));
    EXPECT_EQ(countConnections(first), 90);
    EXPECT_EQ(connectionAt(first, 0)->receivedBytes, 910);
}

TEST_F(ClientSessionTest, WhoWaitsForAListHoldsNobodyUp) {
    std::latch busy{1};
    orders.take({}, [&busy] { busy.wait(); });  // until then other lists have to wait
    const auto isServed = [](ClientSession& by, const auto& request) {
        const std::vector<std::uint8_t> frame = requestFrame(1, request);
        Outbox answers;
        return by.serve(scanFrame(frame).header, scanFrame(frame).body, answers) ==
               RequestRouter::Outcome::Served;
    };
    DaemonGetCountConnectionsRequest count;
    count.iteratorId = newConnectionsCursor();
    EXPECT_FALSE(isServed(session, count));
    {
        ClientSession leaving{context(), [] {}};
        EXPECT_TRUE(isServed(leaving, DaemonCreateConnectionsIteratorRequest()));
        EXPECT_FALSE(isServed(leaving, count));
    }
    busy.count_down();
    EXPECT_EQ(countConnections(count.iteratorId), 0);
}

TEST_F(ClientSessionTest, CursorsAreBoundedAndTheirIdsNeverComeBack) {
    std::int32_t last = 0;
    for (std::size_t i = 0; i < CursorTable<ApplicationsCursor>::maxCursors; ++i) {
        const std::int32_t id = newApplicationsCursor();
        ASSERT_GT(id, last);
        last = id;
    }
    EXPECT_EQ(newApplicationsCursor(), -1);
    DaemonDeleteApplicationsIteratorRequest remove;
    remove.iteratorId = -1;
    tell(remove);
    remove.iteratorId = last;
    tell(remove);
    EXPECT_EQ(newApplicationsCursor(), last + 1);
}

}  // namespace service
