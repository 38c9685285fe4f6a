// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include "libs/sqlite/Database.h"
#include "libs/sqlite/Query.h"
#include "libs/utils/src/StringUtils.h"
#include "protocol/DaemonApplicationInfo.h"
#include "protocol/DaemonApplicationReceivedBytesRequest.h"
#include "protocol/DaemonConnectionInfo.h"
#include "protocol/DaemonIsServerCleanDataBaseReply.h"
#include "protocol/DaemonSetApplicatonsIteratorParametersRequest.h"
#include "protocol/DaemonSetConnectionsIteratorParametersRequest.h"
#include "protocol/DaemonTotalStatisticInfoRequest.h"
#include "protocol/MessageHeader.h"
#include "tests/support/Hex.h"

namespace {

template <class Message>
std::string bytesOf(const Message& message) {
    BinarySerializer out;
    EXPECT_TRUE(message.SerializeTo(out));
    return takeHex(out);
}

TEST(Catalogue, BodiesHaveTheirFieldsInWireOrder) {
    DaemonSetApplicatonsIteratorParametersRequest order;
    order.iteratorId = 7;
    order.sortField = 4;
    order.sortDirection = 1;
    EXPECT_EQ(bytesOf(order),
              "00000007"
              "00000001"
              "00000004");

    DaemonApplicationReceivedBytesRequest bytes;
    bytes.applicationId = -1;
    bytes.toTime = Time(7, 3, 2008, 1, 5, 9);
    bytes.socketProtocol = 17;
    EXPECT_EQ(bytesOf(bytes),
              "ffffffff"
              "00000007"
              "00000003"
              "000007d8"
              "00000001"
              "00000005"
              "00000009"
              "00000011");

    DaemonSetConnectionsIteratorParametersRequest filter;
    filter.sortDirection = 1;
    filter.sortField = 6;
    const std::string body = bytesOf(filter);
    EXPECT_EQ(body.size(), 2 * 68U);
    EXPECT_EQ(body.substr(2 * 60),
              "00000001"
              "00000006");

    EXPECT_EQ(bytesOf(DaemonTotalStatisticInfoRequest()), "");
    EXPECT_EQ(bytesOf(MessageHeader()).size(), 2U * MessageHeader::SerializedSize());
}

TEST(Catalogue, RecordsHaveTheirSizes) {
    EXPECT_EQ(bytesOf(DaemonApplicationInfo()).size(), 2 * 108U);
    DaemonConnectionInfo connection;
    connection.remoteAddress = stringToIp("1.2.3.4", 0);
    connection.remoteAddress.port = 0xFFFE;
    const std::string body = bytesOf(connection);
    EXPECT_EQ(body.size(), 2 * 136U);
    EXPECT_EQ(body.substr(2 * 88, 2 * 24),
              "00000000"
              "0000fffe"
              "01020304000000000000000000000000");
}

TEST(Catalogue, RecordsReadTheirFieldsInWireOrder) {
    BinarySerializer in;
    for (int value = 1; value <= 2; ++value) {
        in.WriteInt(value);
    }
    for (int value = 10; value < 22; ++value) {  // two times: day, month, year, second, minute, hour
        in.WriteInt(value);
    }
    for (int value = 3; value <= 6; ++value) {
        in.WriteInt(value);
    }
    in.WriteLongLong(7);
    in.WriteLongLong(8);
    putHex(in,
           "00000000"
           "0001fffe"
           "01020304000000000000000000000000");
    putHex(in,
           "00000001"
           "00000035"
           "20010db8000000000000000000000009");
    DaemonConnectionInfo record;
    ASSERT_TRUE(record.UnserializeFrom(in));
    EXPECT_EQ(record.id, 1);
    EXPECT_EQ(record.applicationId, 2);
    EXPECT_EQ(record.startTime, Time(10, 11, 12, 13, 14, 15));
    EXPECT_EQ(record.endTime, Time(16, 17, 18, 19, 20, 21));
    EXPECT_EQ(record.direction, 3);
    EXPECT_EQ(record.socketDomain, 4);
    EXPECT_EQ(record.socketType, 5);
    EXPECT_EQ(record.socketProtocol, 6);
    EXPECT_EQ(record.receivedBytes, 7);
    EXPECT_EQ(record.sendedBytes, 8);
    EXPECT_EQ(record.remoteAddress.port, 0xFFFE) << "the low 16 bits count";
    EXPECT_EQ(ipToString(record.remoteAddress), "1.2.3.4");
    EXPECT_EQ(record.localAddress.port, 53);
    EXPECT_EQ(record.localAddress.address[15], 9);
}

TEST(Catalogue, AnyFlagButZeroIsTrue) {
    BinarySerializer in;
    putHex(in, "00000002");
    DaemonIsServerCleanDataBaseReply reply;
    EXPECT_TRUE(reply.UnserializeFrom(in) && reply.isClean);
    EXPECT_EQ(bytesOf(reply), "00000001");
}

TEST(Catalogue, ATruncatedRecordFailsAtEveryByteAndKeepsWhatItRead) {
    DaemonApplicationInfo whole;
    whole.id = 5;
    whole.totalReceivedBytes = 100;
    const std::string bytes = bytesOf(whole);
    for (std::size_t length = 0; length < bytes.size(); length += 2) {
        BinarySerializer in;
        putHex(in, bytes.substr(0, length));
        DaemonApplicationInfo record;
        EXPECT_FALSE(record.UnserializeFrom(in)) << length;
        EXPECT_EQ(record.id, length >= 8 ? 5 : 0);
    }
}

TEST(Catalogue, AnApplicationsRowSumsItsTotals) {
    SQLite::Database database;
    ASSERT_TRUE(database.Open(":memory:", SQLite::OpenMode::ReadWriteCreate));
    SQLite::Query query(database,
                        "SELECT 3, 'Name', NULL, 1, 20, 300, 4000, 50000, 600000, "
                        "'2008-03-07 09:05:00', '2008-03-08 10:06:01'");
    ASSERT_EQ(query.Step(), SQLite::StepResult::Row);
    DaemonApplicationInfo record;
    EXPECT_FALSE(record.UpdateFromQuery(nullptr));
    ASSERT_TRUE(record.UpdateFromQuery(&query));
    EXPECT_EQ(record.id, 3);
    EXPECT_EQ(record.name, "Name");
    EXPECT_EQ(record.fullPath, "");
    EXPECT_EQ(record.tcpSendedBytes, 1);
    EXPECT_EQ(record.tcpReceivedBytes, 20);
    EXPECT_EQ(record.totalSendedBytes, 50301);
    EXPECT_EQ(record.totalReceivedBytes, 604020);
    EXPECT_EQ(Time::toString(record.startTime), "2008-03-07 09:05:00");
    EXPECT_EQ(Time::toString(record.endTime), "2008-03-08 10:06:01");
}

TEST(Catalogue, AConnectionsRowReadsAddressesByTheirFamily) {
    SQLite::Database database;
    ASSERT_TRUE(database.Open(":memory:", SQLite::OpenMode::ReadWriteCreate));
    SQLite::Query query(
        database,
        "SELECT 9, 3, '2008-03-07 09:05:00', '2008-03-08 10:06:01', 1, 10, 2, 6, 5000000000, 8, "
        "1, '32.1.13.184.0.0.0.0.0.0.0.0.0.0.0.1', 443, 0, '10.0.0.2', 65537");
    ASSERT_EQ(query.Step(), SQLite::StepResult::Row);
    DaemonConnectionInfo record;
    ASSERT_TRUE(record.UpdateFromQuery(&query));
    EXPECT_FALSE(record.UpdateFromQuery(nullptr));
    EXPECT_EQ(record.id, 9);
    EXPECT_EQ(record.applicationId, 3);
    EXPECT_EQ(Time::toString(record.startTime), "2008-03-07 09:05:00");
    EXPECT_EQ(Time::toString(record.endTime), "2008-03-08 10:06:01");
    EXPECT_EQ(record.socketType, 2);
    EXPECT_EQ(record.direction, 1);
    EXPECT_EQ(record.socketDomain, 10);
    EXPECT_EQ(record.socketProtocol, 6);
    EXPECT_EQ(record.receivedBytes, 5000000000);
    EXPECT_EQ(record.sendedBytes, 8);
    EXPECT_EQ(ipToString(record.remoteAddress), "32.1.13.184.0.0.0.0.0.0.0.0.0.0.0.1");
    EXPECT_EQ(record.remoteAddress.port, 443);
    EXPECT_EQ(ipToString(record.localAddress), "10.0.0.2");
    EXPECT_EQ(record.localAddress.port, 1) << "ports have 16 bits";
}

}  // namespace
