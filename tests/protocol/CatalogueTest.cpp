// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include "libs/sqlite/Database.h"
#include "libs/sqlite/Query.h"
#include "libs/utils/src/StringUtils.h"
#include "protocol/DaemonApplicationInfo.h"
#include "protocol/DaemonConnectionInfo.h"
#include "protocol/DaemonIsServerCleanDataBaseReply.h"
#include "tests/support/Hex.h"

namespace {

template <class Message>
std::string bytesOf(const Message& message) {
    BinarySerializer out;
    EXPECT_TRUE(message.SerializeTo(out));
    return takeHex(out);
}

TEST(Catalogue, RecordsReadTheirFieldsInWireOrder) {
    BinarySerializer in;
    // Twelve of them are two times: day, month, year, second, minute, hour.
    for (const int value : {1, 2, 10, 11, 12, 13, 14, 15, 16, 17, 18, 19, 20, 21, 3, 4, 5, 6}) {
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

}  // namespace
