// SPDX-License-Identifier: GPL-3.0-or-later
#include "daemon/DaemonConnection.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QElapsedTimer>
#include <chrono>
#include <map>

#include "daemon/ApplicationsIterator.h"
#include "daemon/ConnectionsIterator.h"
#include "libs/utils/src/StringUtils.h"
#include "protocol/DaemonApplicationInfo.h"
#include "protocol/DaemonConnectionInfo.h"
#include "tests/support/Hex.h"
#include "tests/support/LinkPeer.h"
#include "tests/support/PrivateNetwork.h"

// The facade is one per process and its port is fixed: every case runs in a process and a network of its own.

namespace {

constexpr unsigned short daemonPort = 10023;

// Before main: a user without privileges may enter one only while the process has a single thread.
const bool hasPrivateNetwork = enterPrivateNetwork();

class DaemonConnectionTest : public testing::Test {
  protected:
    void SetUp() override {
        if (!hasPrivateNetwork) {
            GTEST_SKIP() << "this system does not allow a network namespace";
        }
    }
};

int indexOf(const LinkPeer::Request& request) {
    return static_cast<unsigned char>(request.body[6]) * 256 + static_cast<unsigned char>(request.body[7]);
}

/** A daemon with 1,000 applications and one connection whose direction is its index. */
bool answer(const LinkPeer::Request& request, BinarySerializer& body) {
    switch (request.header.messageType) {
        case 13:
        case 20:
            body.WriteInt(100 + request.header.messageId);
            return true;
        case 16:
        case 23:
            body.WriteInt(1000);
            return true;
        case 12:
        case 18: {
            DaemonApplicationInfo info;
            info.id = request.header.messageType == 18 ? indexOf(request) : 4711;
            info.name = "Äpp";
            info.tcpReceivedBytes = 5;
            return info.id < 1000 || info.id == 4711 ? info.SerializeTo(body) : true;
        }
        case 25: {
            DaemonConnectionInfo info;
            info.direction = indexOf(request);
            info.remoteAddress = stringToIp("1.2.3.4", 0);
            info.localAddress = stringToIp("5.6.7.8", 0);
            return info.SerializeTo(body);
        }
        case 3:
        case 9:
            body.WriteLongLong(request.header.messageType * 1000LL);
            return true;
        case 27:
            body.WriteInt(1);
            return true;
        default:
            return false;
    }
}

std::vector<LinkPeer::Request> requestsOfType(const std::vector<LinkPeer::Request>& all, int type) {
    std::vector<LinkPeer::Request> found;
    std::copy_if(all.begin(), all.end(), std::back_inserter(found),
                 [type](const auto& request) { return request.header.messageType == type; });
    return found;
}

TEST_F(DaemonConnectionTest, WithoutADaemonEveryQueryHasItsFailureValue) {
    DaemonConnection* connection = DaemonConnection::sharedConnection();
    EXPECT_EQ(connection, DaemonConnection::sharedConnection());
    EXPECT_FALSE(connection->isValid());
    EXPECT_EQ(connection->countApplications(1), -1);
    EXPECT_EQ(connection->countConnections(1), 0);
    EXPECT_EQ(connection->createApplicationsIterator(), -1);
    EXPECT_EQ(connection->applicationInfo(1, 0), nullptr);
    EXPECT_EQ(connection->totalStatisticInfo(), nullptr);
    EXPECT_EQ(connection->totalReceivedBytesToTime(QDateTime::currentDateTime(), 6), 0);
    EXPECT_FALSE(connection->isDaemonCleanDataBase());
    EXPECT_EQ(ApplicationsIterator::iterator()->prefetch(0, 3).size(), 3U);
    connection->startCleanDataBase();
    EXPECT_TRUE(connection->applicationsIterators().empty());
}

TEST_F(DaemonConnectionTest, QueriesBecomeRecords) {
    const LinkPeer peer(answer, daemonPort);
    ASSERT_TRUE(peer.isBound());
    DaemonConnection* connection = DaemonConnection::sharedConnection();
    ASSERT_TRUE(connection->isValid());
    const auto application = connection->applicationInfoFromId(4711);
    ASSERT_NE(application, nullptr);
    EXPECT_EQ(application->name(), QString::fromUtf8("Äpp"));
    EXPECT_EQ(application->tcpReceivedBytes(), 5);
    const auto cursor = ConnectionsIterator::iterator();
    const QStringList directions{"Input", "Output", "Undefined"};
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(cursor->connectionInfo(i)->direction(), directions[i]);
    }
    EXPECT_TRUE(cursor->connectionInfo(5)->direction().isNull());
    EXPECT_EQ(cursor->connectionInfo(5)->remoteAddress(), "1.2.3.4");
    EXPECT_EQ(cursor->connectionInfo(5)->localAddress(), "5.6.7.8");
    EXPECT_EQ(connection->totalReceivedBytesToTime(QDateTime::currentDateTime(), -1), 3000);
    EXPECT_EQ(connection->totalSendedBytesForApplicationId(1, QDateTime::currentDateTime(), -1), 9000);
    EXPECT_TRUE(connection->isDaemonCleanDataBase());
}

TEST_F(DaemonConnectionTest, CursorsRememberOneRowAndFetchManyInOneGo) {
    LinkPeer peer(answer, daemonPort);
    const auto cursor = ApplicationsIterator::iterator();
    EXPECT_EQ(cursor->countApplications(), 1000);
    for (const int index : {3, 3, 4, 3}) {
        EXPECT_EQ(cursor->applicationInfo(index)->id(), index);
    }
    cursor->setSortField(4);
    EXPECT_EQ(cursor->applicationInfo(3)->id(), 3);
    EXPECT_EQ(requestsOfType(peer.waitForRequests(7), 18).size(), 4U) << "3, 4, 3, and 3 anew after the sort";
    EXPECT_EQ(cursor->applicationInfo(1000), nullptr);
    EXPECT_EQ(cursor->applicationInfo(1000), nullptr);
    EXPECT_EQ(requestsOfType(peer.waitForRequests(9), 18).size(), 6U) << "a failed row is not remembered";

    const auto rows = cursor->prefetch(960, 41);
    ASSERT_EQ(rows.size(), 41U);
    for (int i = 0; i < 40; ++i) {
        EXPECT_EQ(rows[i]->id(), 960 + i);
    }
    EXPECT_EQ(rows[40], nullptr);
    EXPECT_EQ(requestsOfType(peer.waitForRequests(50), 18).size(), 47U) << "one request a row";
}

TEST_F(DaemonConnectionTest, DeletesTheCursorsThatAreStillOpenWhenItGoes) {
    LinkPeer peer(answer, daemonPort);
    DaemonConnection* connection = DaemonConnection::sharedConnection();
    connection->createApplicationsIterator();
    connection->createApplicationsIterator();
    connection->deleteConnectionsIterator(connection->createConnectionsIterator());
    EXPECT_TRUE(connection->connectionsIterators().empty());
    EXPECT_EQ(connection->applicationsIterators().size(), 2U);
    peer.waitForRequests(4);
    delete connection;
    const auto requests = peer.waitForRequests(6);
    const auto deletions = requestsOfType(requests, 19);
    ASSERT_EQ(deletions.size(), 2U);
    EXPECT_EQ(deletions[0].body.back(), 100);
    EXPECT_EQ(deletions[1].body.back(), 101);
    EXPECT_EQ(requestsOfType(requests, 26).size(), 1U);
}

class RecordingDelegate : public DaemonConnectionDelegate {
  public:
    explicit RecordingDelegate(const QElapsedTimer& clock) : m_Clock(clock) {}
    void newApplicationAdded(const std::shared_ptr<const ApplicationInfo>& application) override {
        note(application == nullptr ? "added nothing" : QString("added %1").arg(application->id()));
    }
    void daemonStartCleanDataBase() override { note("start"); }
    void daemonEndCleanDataBase() override { note("end"); }

    QStringList m_Events;
    std::vector<qint64> m_Times;

  private:
    void note(const QString& event) {
        m_Events << event;
        m_Times.push_back(m_Clock.elapsed());
    }
    const QElapsedTimer& m_Clock;
};

TEST_F(DaemonConnectionTest, EventsReachTheDelegateInOrderAndASecondApart) {
    LinkPeer peer(answer, daemonPort);
    DaemonConnection* connection = DaemonConnection::sharedConnection();
    QElapsedTimer clock;
    clock.start();
    RecordingDelegate delegate(clock);
    connection->setDelegate(&delegate);
    for (const int event : {0, 1, 2, 3}) {
        peer.sendEvent(event, 4711, 5);
    }
    while (delegate.m_Events.size() < 3 && clock.elapsed() < 15000) {
        QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
    }
    connection->setDelegate(nullptr);
    EXPECT_EQ(delegate.m_Events, (QStringList{"added 4711", "start", "end"}));
    ASSERT_EQ(delegate.m_Times.size(), 3U);
    // From the clock's start, which was before they were sent: a busy machine makes them later, never earlier.
    EXPECT_GE(delegate.m_Times[1], 2000) << "an unknown event takes its second too";
    EXPECT_GE(delegate.m_Times[2], 3000);
}

TEST_F(DaemonConnectionTest, AfterTheDaemonIsGoneQueriesFailAtOnce) {
    LinkPeer peer(answer, daemonPort);
    const auto cursor = ApplicationsIterator::iterator();
    EXPECT_EQ(cursor->countApplications(), 1000);
    peer.die();
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    EXPECT_EQ(cursor->countApplications(), 0);
    EXPECT_EQ(cursor->prefetch(0, 2)[1], nullptr);
    EXPECT_TRUE(DaemonConnection::sharedConnection()->isValid());
}

}  // namespace
