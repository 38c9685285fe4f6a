// SPDX-License-Identifier: GPL-3.0-or-later
#include "protocol/LLNC_ClientConnection.h"

#include <gtest/gtest.h>

#include <chrono>
#include <mutex>
#include <thread>

#include "protocol/DaemonApplicationInfo.h"
#include "protocol/DaemonApplicationInfoFromIdRequest.h"
#include "protocol/DaemonGetCountApplicationsReply.h"
#include "protocol/DaemonGetCountApplicationsRequest.h"
#include "tests/support/Hex.h"
#include "tests/support/LinkPeer.h"

namespace {

using namespace std::chrono_literals;

/** Answers a count request with the id of its cursor. */
bool answerWithBody(const LinkPeer::Request& request, BinarySerializer& body) {
    body.WriteCopy(request.body.data(), static_cast<long>(request.body.size()));
    return true;
}

DaemonGetCountApplicationsRequest countRequest(int iteratorId) {
    DaemonGetCountApplicationsRequest request;
    request.iteratorId = iteratorId;
    return request;
}

int askCount(LLNC_ClientConnection& connection, int iteratorId) {
    DaemonGetCountApplicationsReply reply;
    return connection.SendMessage(countRequest(iteratorId), reply, 0) ? reply.count : -1;
}

/** Returns when `isSo` is, or after ten seconds. */
template <class Condition>
void waitUntil(Condition isSo) {
    for (int i = 0; i < 10000 && !isSo(); ++i) {
        std::this_thread::sleep_for(1ms);
    }
}

TEST(LLNC_ClientConnection, GivesEveryThreadItsOwnReply) {
    LinkPeer peer(answerWithBody);
    LLNC_ClientConnection connection(peer.address());
    std::vector<std::thread> threads;
    std::atomic<int> wrong = 0;
    for (int thread = 0; thread < 8; ++thread) {
        threads.emplace_back([&, thread] {
            for (int i = 0; i < 20; ++i) {
                wrong += askCount(connection, 1000 * thread + i) == 1000 * thread + i ? 0 : 1;
            }
        });
    }
    for (int i = 0; i < 20; ++i) {
        peer.sendEvent(i, 100 + i, 7);
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(wrong, 0);
    const auto requests = peer.waitForRequests(160);
    for (std::size_t i = 0; i < requests.size(); ++i) {
        EXPECT_EQ(requests[i].header.messageId, static_cast<int>(i)) << "numbers follow the sending order";
    }
    for (int i = 0; i < 20; ++i) {
        waitUntil([&] { return connection.IsEventOccured(); });
        const LLNC_ClientConnection::Event event = connection.GetNextEvent();
        EXPECT_EQ(event.eventId, i);
        EXPECT_EQ(event.param, 100 + i);
        EXPECT_EQ(event.moduleId, 7);
    }
    EXPECT_EQ(connection.GetNextEvent().eventId, -1);
    EXPECT_FALSE(connection.IsEventOccured());
}

TEST(LLNC_ClientConnection, TakesRepliesInAnyOrderAndTheLaterOfTwo) {
    LinkPeer peer(nullptr);
    LLNC_ClientConnection connection(peer.address());
    const int first = connection.SendMessage(countRequest(1), 0);
    const int second = connection.SendMessage(countRequest(2), 0);
    const auto reply = [&](int messageId, const char* bytes) {
        BinarySerializer body;
        putHex(body, bytes);
        peer.sendFrame(messageId, 0, body);
    };
    reply(second, "00000016");
    reply(first, "00000001");
    reply(first, "0000000b");
    reply(99, "00000000");
    DaemonGetCountApplicationsReply answer;
    EXPECT_TRUE(connection.WaitReply(second, answer));
    EXPECT_EQ(answer.count, 22);
    waitUntil([&] { return connection.GetReply(99) != nullptr; });  // sent behind the others
    EXPECT_TRUE(connection.WaitReply(first, answer));
    EXPECT_EQ(answer.count, 11);
    EXPECT_EQ(connection.GetReply(first), nullptr);
}

TEST(LLNC_ClientConnection, ShortAndHostileRepliesFailWithoutHarm) {
    LinkPeer peer(nullptr);
    LLNC_ClientConnection connection(peer.address());
    const int request = connection.SendMessage(countRequest(1), 0);
    BinarySerializer body;
    putHex(body, "0000");
    peer.sendFrame(request, 17, body);
    DaemonGetCountApplicationsReply answer;
    EXPECT_FALSE(connection.WaitReply(request, answer));

    putHex(body, "00000002");
    peer.sendFrame(-1, -1, body);  // an event without its parameter

    const int second = connection.SendMessage(DaemonApplicationInfoFromIdRequest(), 0);
    putHex(body,
           "00000001"
           "7fffffff"
           "6162");
    peer.sendFrame(second, 1, body);
    DaemonApplicationInfo record;
    EXPECT_FALSE(connection.WaitReply(second, record)) << "a name of 2 GiB that never comes";

    MessageHeader negative;
    negative.replyToId = 77;
    negative.dataSize = -5;
    BinarySerializer frame;
    negative.SerializeTo(frame);
    negative.replyToId = 78;
    negative.dataSize = 0x7FFFFFFF;
    negative.SerializeTo(frame);
    std::string bytes(frame.GetCurrentDataSize(), '\0');
    frame.Read(bytes.data(), static_cast<long>(bytes.size()));
    peer.send(bytes + "the rest never comes");
    std::unique_ptr<BinarySerializer> empty;
    waitUntil([&] { return (empty = connection.GetReply(77)) != nullptr; });
    ASSERT_NE(empty, nullptr);
    EXPECT_EQ(empty->GetCurrentDataSize(), 0);
    EXPECT_FALSE(connection.IsEventOccured());
}

TEST(LLNC_ClientConnection, LosingTheDaemonFailsTheNextRequest) {
    LinkPeer peer(answerWithBody);
    LLNC_ClientConnection connection(peer.address());
    EXPECT_EQ(askCount(connection, 5), 5);
    peer.die();
    std::this_thread::sleep_for(20ms);
    EXPECT_EQ(askCount(connection, 6), -1);
    EXPECT_FALSE(connection.SendEvent(1, 0, 0));
    connection.stop();
    EXPECT_FALSE(connection.isRunned()) << "the reader must end although the stream has ended";
}

}  // namespace
