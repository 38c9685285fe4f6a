// SPDX-License-Identifier: GPL-3.0-or-later
#include "daemon/DaemonConnection.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <QCoreApplication>
#include <QElapsedTimer>
#include <algorithm>
#include <array>
#include <chrono>
#include <cstdlib>
#include <memory>
#include <thread>

#include "daemon/ApplicationsIterator.h"
#include "daemon/ConnectionsIterator.h"
#include "libs/utils/src/StringUtils.h"
#include "protocol/DaemonApplicationInfo.h"
#include "protocol/DaemonConnectionInfo.h"
#include "tests/support/DaemonTest.h"
#include "tests/support/Hex.h"

namespace {

class DaemonConnectionTest : public DaemonTest {};

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
            info.id = DaemonTest::intAt(request.body, request.body.size() - 4);
            info.name = "Äpp";
            info.tcpReceivedBytes = 5;
            return info.id < 1000 || info.id == 4711 ? info.SerializeTo(body) : true;
        }
        case 25: {
            DaemonConnectionInfo info;
            info.direction = DaemonTest::intAt(request.body, 4);
            info.remoteAddress = stringToIp("1.2.3.4", 0);
            info.localAddress = stringToIp("5.6.7.8", 0);
            return info.SerializeTo(body);
        }
        case 3:
        case 5:
        case 7:
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

auto rowsAsked(const std::vector<LinkPeer::Request>& requests) {
    return std::count_if(requests.begin(), requests.end(),
                         [](const auto& request) { return request.header.messageType == 18; });
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
    ASSERT_TRUE(DaemonConnection::sharedConnection()->isValid());
    const auto cursor = ApplicationsIterator::iterator();
    EXPECT_EQ(cursor->countApplications(), 1000);
    for (const int index : {3, 3, 4, 3}) {
        EXPECT_EQ(cursor->applicationInfo(index)->id(), index);
    }
    cursor->setSortField(4);
    EXPECT_EQ(cursor->applicationInfo(3)->id(), 3);
    EXPECT_EQ(rowsAsked(peer.waitForRequests(7)), 4) << "3, 4, 3, and 3 anew after the sort";
    EXPECT_EQ(cursor->applicationInfo(1000), nullptr);
    EXPECT_EQ(cursor->applicationInfo(1000), nullptr);
    EXPECT_EQ(rowsAsked(peer.waitForRequests(9)), 6) << "a failed row is not remembered";

    const auto rows = cursor->prefetch(960, 41);
    ASSERT_EQ(rows.size(), 41U);
    for (int i = 0; i < 40; ++i) {
        EXPECT_EQ(rows[i]->id(), 960 + i);
    }
    EXPECT_EQ(rows[40], nullptr);
    EXPECT_EQ(rowsAsked(peer.waitForRequests(50)), 47) << "one request a row";
}

std::string hexOf(const LinkPeer::Request& request) {
    BinarySerializer body;
    body.WriteCopy(request.body.data(), static_cast<long>(request.body.size()));
    return std::to_string(request.header.messageType) + ":" + takeHex(body);
}

TEST_F(DaemonConnectionTest, EveryQueryCarriesItsArguments) {
    LinkPeer peer(answer, daemonPort);
    DaemonConnection* connection = DaemonConnection::sharedConnection();
    const QDateTime start(QDate(2008, 3, 7), QTime(9, 5, 1));
    const QDateTime end(QDate(2009, 4, 8), QTime(10, 6, 2));
    connection->totalReceivedBytesToTime(start, 6);
    connection->totalSendedBytesToTime(start, 17);
    connection->totalReceivedBytesForApplicationId(258, start, -1);
    connection->totalSendedBytesForApplicationId(258, end, 6);
    connection->setApplicationIteratorParameters(7, 4, 1);
    connection->setConnectionIteratorParameters(8, start, end, 258, 17, 5, 0);
    connection->deleteConnectionsIterator(9);
    connection->startCleanDataBase();
    connection->sendConfigChangedEvent();

    const std::string startBytes = "0000000700000003000007d8000000010000000500000009";
    const std::string endBytes = "0000000800000004000007d900000002000000060000000a";
    const std::vector<std::string> expected{
        "3:" + startBytes + "00000006",
        "5:" + startBytes + "00000011",
        "7:00000102" + startBytes + "ffffffff",
        "9:00000102" + endBytes + "00000006",
        "15:000000070000000100000004",
        "22:00000008" + startBytes + endBytes + "00000102000000110000000000000005",
        "26:00000009",
        "-1:0000000100000000",
        "-1:0000000400000000",
    };
    std::vector<std::string> sent;
    for (const auto& request : peer.waitForRequests(expected.size())) {
        sent.push_back(hexOf(request));
    }
    EXPECT_EQ(sent, expected);
}

TEST_F(DaemonConnectionTest, RecordsTakeEachFieldFromItsOwn) {
    const LinkPeer peer(
        [](const LinkPeer::Request& request, BinarySerializer& body) {
            if (request.header.messageType != 11) {  // the sums begin where the counters do
                body.WriteInt(1);
                body.WriteString("n");
                body.WriteString("p");
            }
            for (long long value = 100; value < 106; ++value) {
                body.WriteLongLong(value);
            }
            for (const int year : {2008, 2009}) {
                Time(1, 1, year, 0, 0, 0).SerializeTo(body);
            }
            return true;
        },
        daemonPort);
    const auto application = DaemonConnection::sharedConnection()->applicationInfoFromId(1);
    ASSERT_NE(application, nullptr);
    EXPECT_EQ((std::array{application->totalReceivedBytes(), application->totalSendedBytes(),
                          application->tcpReceivedBytes(), application->tcpSendedBytes(),
                          application->udpReceivedBytes(), application->udpSendedBytes()}),
              (std::array<std::int64_t, 6>{100, 101, 102, 103, 104, 105}));
    EXPECT_EQ(application->startTime().date().year(), 2008);
    EXPECT_EQ(application->endTime().date().year(), 2009);
    const auto totals = DaemonConnection::sharedConnection()->totalStatisticInfo();
    ASSERT_NE(totals, nullptr);
    EXPECT_EQ(totals->totalReceivedBytes(), 100);
    EXPECT_EQ(totals->udpSendedBytes(), 105);
    EXPECT_EQ(totals->startTime().date().year(), 2008);
}

/** Runs `body` in a process of its own, which leaves through `exit`, once the parent says so. */
template <class Body>
auto startProcess(Body body) {
    int gate[2];
    EXPECT_EQ(pipe(gate), 0);
    const pid_t process = fork();
    if (process == 0) {
        char byte = 0;
        [[maybe_unused]] const auto opened = read(gate[0], &byte, 1);
        body();
        std::exit(0);
    }
    return [process, gate = gate[1]] {
        [[maybe_unused]] const auto opened = write(gate, "x", 1);
        int status = 0;
        waitpid(process, &status, 0);
        return status;
    };
}

TEST_F(DaemonConnectionTest, TheProcessesExitDeletesTheCursorsThatAreStillOpen) {
    const auto finish = startProcess([] {
        static std::shared_ptr<ApplicationsIterator> outlivesTheConnection;
        outlivesTheConnection = ApplicationsIterator::iterator();
        ApplicationsIterator::iterator();
        DaemonConnection::sharedConnection()->createConnectionsIterator();
    });
    LinkPeer peer(answer, daemonPort);
    EXPECT_EQ(finish(), 0);
    std::vector<std::string> sent;
    for (const auto& request : peer.waitForRequests(6)) {
        sent.push_back(hexOf(request));
    }
    EXPECT_EQ(sent,
              (std::vector<std::string>{"13:", "13:", "19:00000065", "20:", "19:00000064", "26:00000067"}));
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
