// SPDX-License-Identifier: GPL-3.0-or-later
#include "protocol/BinarySerializer.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <limits>
#include <string>

#include "protocol/ByteOrder.h"
#include "tests/support/Hex.h"

namespace {

TEST(BinarySerializer, WritesBigEndianGoldenBytes) {
    BinarySerializer out;
    out.WriteByte(0xFE);
    out.WriteShort(258);
    out.WriteInt(1);
    out.WriteLong(-2);
    out.WriteLongLong(0x0102030405060708);
    out.WriteFloat(1.0F);
    out.WriteDouble(-2.5);
    EXPECT_EQ(takeHex(out),
              "fe"
              "0102"
              "00000001"
              "fffffffe"
              "0102030405060708"
              "3f800000"
              "c004000000000000");
    out.WriteString("");
    out.WriteString("ab");
    EXPECT_EQ(out.GetCurrentDataSize(), 11);
    EXPECT_FALSE(out.WriteData(nullptr, 1));
    EXPECT_EQ(takeHex(out),
              "00000000"
              "00000002"
              "616200");
}

TEST(BinarySerializer, ReadsBackWhatItWrote) {
    BinarySerializer data;
    data.WriteShort(-2);
    data.WriteLong(0x1FFFFFFFFL);
    data.WriteLongLong(std::numeric_limits<long long>::min());
    data.WriteFloat(-0.0F);
    data.WriteDouble(1e-300);
    short number = 0;
    long wide = 0;
    long long widest = 0;
    float single = 0;
    double twice = 0;
    EXPECT_TRUE(data.ReadShort(number) && data.ReadLong(wide) && data.ReadLongLong(widest) &&
                data.ReadFloat(single) && data.ReadDouble(twice));
    EXPECT_EQ(number, -2);
    EXPECT_EQ(wide, -1) << "32 bits travel, sign-extended on arrival";
    EXPECT_EQ(widest, std::numeric_limits<long long>::min());
    EXPECT_TRUE(std::signbit(single));
    EXPECT_EQ(twice, 1e-300);
    EXPECT_EQ(PrepareToSendLong(1), std::endian::native == std::endian::little ? 0x01000000 : 1);
}

TEST(BinarySerializer, AShortReadChangesNothing) {
    BinarySerializer data;
    data.WriteData(reinterpret_cast<const unsigned char*>("abc"), 3);
    int number = 42;
    double twice = 1.5;
    std::string text = "kept";
    EXPECT_FALSE(data.ReadInt(number) || data.ReadDouble(twice) || data.ReadString(text));
    EXPECT_EQ(number, 42);
    EXPECT_EQ(twice, 1.5);
    EXPECT_EQ(text, "kept");
    EXPECT_EQ(data.GetCurrentDataSize(), 3);
}

TEST(BinarySerializer, ReadsTheStringsThatAPeerMaySend) {
    struct Case {
        const char* bytes;
        const char* text;
        int left;
    };
    for (const auto& [bytes, expected, left] :
         {Case{"0000000061", "", 1}, Case{"ffffffff", "", 0}, Case{"0000000361006263", "a", 0},
          Case{"0000000161620a", "a", 1} /* without terminator */, Case{"000000036162", "", 2},
          Case{"7fffffff6162", "", 2}}) {
        BinarySerializer data;
        putHex(data, bytes);
        std::string text = "old";
        EXPECT_TRUE(data.ReadString(text)) << bytes;
        EXPECT_EQ(text, expected) << bytes;
        EXPECT_EQ(data.GetCurrentDataSize(), left) << bytes;
    }
}

}  // namespace
