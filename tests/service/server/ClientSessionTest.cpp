// SPDX-License-Identifier: GPL-3.0-or-later
#include "service/server/ClientSession.h"

#include <array>
#include <semaphore>

#include "service/server/LocalCalendar.h"
#include "tests/service/server/SessionFixture.h"

namespace service {

using Outcome = RequestRouter::Outcome;

class ClientSessionTest : public SessionFixture {
  protected:
    /** Has one frame served, however long its answer takes. */
    Outcome serve(const std::vector<std::uint8_t>& frame) {
        const ScannedFrame scanned = scanFrame(frame);
        EXPECT_EQ(scanned.kind, ScannedFrame::Kind::Message);
        Outcome outcome = session.serve(scanned.header, scanned.body, outbox);
        while (outcome == Outcome::NotYet) {
            EXPECT_EQ(outbox.size(), 0u);
            m_Wakes.acquire();
            outcome = session.serve(scanned.header, scanned.body, outbox);
        }
        return outcome;
    }

    /** Takes the one frame that waits; its body's bytes go to `body`. */
    MessageHeader takeReply(std::vector<std::uint8_t>& body) {
        const ScannedFrame reply = scanFrame(outbox.buffer().bytes());
        EXPECT_EQ(reply.kind, ScannedFrame::Kind::Message);
        EXPECT_EQ(reply.consumed, outbox.size());
        body.assign(reply.body.begin(), reply.body.end());
        outbox.buffer().take(reply.consumed);
        return reply.header;
    }

    /** Asks and reads the answer; nothing when its body is empty. */
    template <class Reply, class Request>
    std::optional<Reply> ask(const Request& request) {
        const std::int32_t id = m_NextId++;
        EXPECT_EQ(serve(requestFrame(id, request)), Outcome::Served);
        std::vector<std::uint8_t> bytes;
        const MessageHeader header = takeReply(bytes);
        EXPECT_EQ(header.replyToId, id);
        EXPECT_EQ(header.moduleId, 0);
        EXPECT_EQ(header.messageType, Reply::MessageType);
        BinarySerializer body;
        body.WriteData(bytes.data(), static_cast<int>(bytes.size()));
        Reply reply;
        return reply.UnserializeFrom(body) ? std::optional(reply) : std::nullopt;
    }

    /** Sends a request that gets no answer. */
    template <class Request>
    void tell(const Request& request) {
        EXPECT_EQ(serve(requestFrame(m_NextId++, request)), Outcome::Served);
        EXPECT_EQ(outbox.size(), 0u);
    }

    std::int32_t newApplicationsCursor() {
        return ask<DaemonCreateApplicationIteratorReply>(DaemonCreateApplicationIteratorRequest())
            ->iteratorId;
    }
    std::int32_t countApplications(std::int32_t cursor) {
        DaemonGetCountApplicationsRequest request;
        request.iteratorId = cursor;
        return ask<DaemonGetCountApplicationsReply>(request)->count;
    }
    std::optional<DaemonApplicationInfo> applicationAt(std::int32_t cursor, std::int32_t row) {
        DaemonGetApplicationInfoRequest request;
        request.iteratorId = cursor;
        request.index = row;
        return ask<DaemonApplicationInfo>(request);
    }
    std::optional<DaemonConnectionInfo> connectionAt(std::int32_t cursor, std::int32_t row) {
        DaemonGetConnectionInfoRequest request;
        request.iteratorId = cursor;
        request.index = row;
        return ask<DaemonConnectionInfo>(request);
    }
    std::int32_t countConnections(std::int32_t cursor) {
        DaemonGetCountConnectionsRequest request;
        request.iteratorId = cursor;
        return ask<DaemonGetCountConnectionsReply>(request)->count;
    }
    std::int64_t received(Moment upTo, std::int32_t protocol) {
        DaemonTotalReceivedBytesRequest request;
        request.toTime = LocalCalendar::fromMoment(upTo);
        request.socketProtocol = protocol;
        return ask<DeamonTotalReceivedBytesReply>(request)->bytes;
    }
    std::int64_t applicationSent(ApplicationId id, Moment upTo, std::int32_t protocol) {
        DaemonApplicationSendedBytesRequest request;
        request.applicationId = id;
        request.toTime = LocalCalendar::fromMoment(upTo);
        request.socketProtocol = protocol;
        return ask<DaemonApplicationSendedBytesReply>(request)->bytes;
    }

  private:
    std::counting_semaphore<> m_Wakes{0};

  protected:
    ClientSession session{context(), [this] { m_Wakes.release(); }};
    Outbox outbox;

  private:
    std::int32_t m_NextId = 0;
};

TEST_F(ClientSessionTest, EveryRequestWithAReplyIsAnsweredWhateverItsBodyHolds) {
    constexpr std::array typesWithReply{3, 5, 7, 9, 11, 12, 13, 16, 18, 20, 23, 25, 27};
    std::int32_t id = 0;
    for (const int type : typesWithReply) {
        for (const std::int32_t size : {0, 3, 4096}) {
            std::vector<std::uint8_t> frame = frameHeader(++id, type, size);
            frame.resize(frame.size() + static_cast<std::size_t>(size), 0xff);
            serve(frame);
            std::vector<std::uint8_t> body;
            const MessageHeader reply = takeReply(body);
            EXPECT_EQ(reply.replyToId, id) << "type " << type;
            EXPECT_NE(reply.messageType, -1) << "type " << type;
        }
    }
}

TEST_F(ClientSessionTest, ABodyThatIsTooShortIsAnsweredEmptyIfSomebodyWaits) {
    std::vector<std::uint8_t> body;
    EXPECT_EQ(serve({frameHeader(1, DaemonGetCountApplicationsRequest::MessageType, 0)}), Outcome::ShortBody);
    takeReply(body);
    EXPECT_TRUE(body.empty());
    EXPECT_EQ(serve({frameHeader(2, DaemonDeleteApplicationsIteratorRequest::MessageType, 0)}),
              Outcome::ShortBody);
    EXPECT_EQ(serve({frameHeader(3, EventMessage::MessageType, 0)}), Outcome::ShortBody);
    EXPECT_EQ(outbox.size(), 0u);
}

TEST_F(ClientSessionTest, UnknownTypesAreAnsweredEmpty) {
    for (const int type : {0, 1, 2, 4, 30, -2, 1 << 30}) {
        EXPECT_EQ(serve(frameHeader(type, type, 0)), Outcome::UnknownType);
        std::vector<std::uint8_t> body;
        const MessageHeader reply = takeReply(body);
        EXPECT_EQ(reply.replyToId, type);
        EXPECT_NE(reply.messageType, -1);
        EXPECT_TRUE(body.empty());
    }
}

TEST_F(ClientSessionTest, WhatDoesNotExistIsAnsweredEmptyOrAsZero) {
    move(sampleOf(1, "/a", {10, 20}));
    const std::int32_t cursor = newApplicationsCursor();
    for (const std::int32_t missing : {-1, 0, 77}) {
        DaemonApplicationInfoFromIdRequest byId;
        byId.applicationId = missing;
        EXPECT_FALSE(ask<DaemonApplicationInfo>(byId)) << missing;
        EXPECT_FALSE(applicationAt(missing, 0)) << missing;
        EXPECT_FALSE(connectionAt(missing, 0)) << missing;
        EXPECT_EQ(countApplications(missing), 0) << missing;
        EXPECT_EQ(countConnections(missing), 0) << missing;
        EXPECT_EQ(applicationSent(missing, now, -1), 0) << missing;
        EXPECT_EQ(applicationSent(missing, now - std::chrono::seconds(1), -1), 0) << missing;
    }
    EXPECT_TRUE(applicationAt(cursor, 0));
    EXPECT_FALSE(applicationAt(cursor, 1));
    EXPECT_FALSE(applicationAt(cursor, -1));
}

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
    TrafficSample udp = sampleOf(2, "/a", {1, 2});
    udp.socketProtocol = 17;
    move(udp);
    TrafficSample icmp = sampleOf(3, "/b", {100, 200});
    icmp.socketProtocol = 1;
    move(icmp);
    EXPECT_EQ(received(now, -1), 111);
    EXPECT_EQ(received(now + std::chrono::hours(24), -1), 111);
    EXPECT_EQ(received(now, 6), 10);
    EXPECT_EQ(received(now, 17), 1);
    EXPECT_EQ(received(now, 1), 0) << "neither TCP nor UDP nor all";
    EXPECT_EQ(received(then, -1), 10);
    EXPECT_EQ(received(then - std::chrono::seconds(1), -1), 0);
    EXPECT_EQ(applicationSent(1, now, -1), 22);
    EXPECT_EQ(applicationSent(1, then, -1), 20);
    const auto totals = ask<DaemonTotalStatisticInfo>(DaemonTotalStatisticInfoRequest());
    EXPECT_EQ(totals->totalSendedBytes, 222);
    EXPECT_EQ(totals->udpSendedBytes, 2);
    EXPECT_EQ(totals->startTime, LocalCalendar::fromMoment(at(0)));
}

TEST_F(ClientSessionTest, ConnectionsAreFilteredAndLiveOnesAreUpToDate) {
    move(sampleOf(1, "/a", {10, 0}));
    TrafficSample udp = sampleOf(2, "/b", {7, 0});
    udp.socketProtocol = 17;
    udp.closed = true;
    move(udp);
    writeHistory();
    move(sampleOf(1, "/a", {5, 0}));
    const auto cursor =
        ask<DaemonCreateConnectionsIteratorReply>(DaemonCreateConnectionsIteratorRequest())->iteratorId;
    EXPECT_EQ(countConnections(cursor), 2) << "without a filter all of them";
    DaemonSetConnectionsIteratorParametersRequest filter;
    filter.iteratorId = cursor;
    filter.startTime = LocalCalendar::fromMoment(at(0));
    filter.endTime = LocalCalendar::fromMoment(now);
    filter.applicationId = -1;
    filter.socketProtocol = -1;
    filter.sortField = 3;
    filter.sortDirection = 0;
    tell(filter);
    ASSERT_EQ(countConnections(cursor), 2);
    EXPECT_EQ(connectionAt(cursor, 0)->receivedBytes, 15) << "as the ledger knows it";
    EXPECT_EQ(connectionAt(cursor, 1)->receivedBytes, 7) << "as the history kept it";
    EXPECT_FALSE(connectionAt(cursor, 2));
    filter.socketProtocol = 17;
    tell(filter);
    EXPECT_EQ(connectionAt(cursor, 0)->receivedBytes, 7);
    filter.applicationId = 1;
    tell(filter);
    EXPECT_EQ(countConnections(cursor), 0);
}

TEST_F(ClientSessionTest, AListThatWasLetGoComesBackWithoutWhatIsNewer) {
    const auto open = [this](std::uint64_t from, std::uint64_t to) {
        for (std::uint64_t key = from; key <= to; ++key) {
            move(sampleOf(key, "/a", {static_cast<std::int64_t>(1000 - key), 0}));
        }
        writeHistory();
    };
    const auto newCursor = [this] {
        DaemonSetConnectionsIteratorParametersRequest byReceived;
        byReceived.iteratorId =
            ask<DaemonCreateConnectionsIteratorReply>(DaemonCreateConnectionsIteratorRequest())->iteratorId;
        byReceived.endTime = LocalCalendar::fromMoment(now + std::chrono::hours(1));
        byReceived.applicationId = byReceived.socketProtocol = -1;
        byReceived.sortField = 3;
        byReceived.sortDirection = 1;
        tell(byReceived);
        return byReceived.iteratorId;
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

TEST_F(ClientSessionTest, CleaningIsToldOnceAndShowsTheOldCountUntilItHasEnded) {
    const auto isCleaning = [this] {
        return ask<DaemonIsServerCleanDataBaseReply>(DaemonIsServerCleanDataBaseRequest())->isClean;
    };
    move(sampleOf(1, "/a", {10, 20}));
    EXPECT_FALSE(isCleaning());
    EventMessage clean;
    clean.eventId = 1;
    tell(clean);
    tell(clean);
    EXPECT_TRUE(isCleaning());
    EXPECT_EQ(told, (std::vector{DaemonEvent::CleaningStarted}));
    EXPECT_EQ(wipes, 1);
    move(sampleOf(1, "/a", {5, 0}));
    EXPECT_EQ(received(now, -1), 15);
    ledger.endClearing(true);
    cleaner.finish(true);
    EXPECT_EQ(received(now, -1), 5);
    EXPECT_FALSE(isCleaning());
    EXPECT_EQ(told.back(), DaemonEvent::CleaningFinished);
    EventMessage configurationChanged;
    configurationChanged.eventId = 4;
    tell(configurationChanged);
    EXPECT_EQ(configurationChanges, 1);
}

}  // namespace service
