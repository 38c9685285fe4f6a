// SPDX-License-Identifier: GPL-3.0-or-later
#include "threads/DataQueue.h"

#include <gtest/gtest.h>

#include <string>

namespace {

std::string readText(DataQueue& queue, long length) {
    std::string text(length, '?');
    return queue.Read(text.data(), length) ? text : "(refused)";
}

TEST(DataQueue, ReadsAcrossChunksInOrder) {
    DataQueue queue;
    queue.WriteCopy("a", 1);
    queue.WriteCopy("bc", 2);
    queue.WriteCopy("def", 3);
    EXPECT_EQ(readText(queue, 4), "abcd");
    EXPECT_EQ(queue.Size(), 2);
    queue.WriteCopy("g", 1);
    EXPECT_EQ(readText(queue, 3), "efg");
    EXPECT_EQ(queue.Size(), 0);
    EXPECT_TRUE(queue.WriteCopy("h", 1)) << "an emptied queue must start over";
    EXPECT_EQ(readText(queue, 1), "h");
}

TEST(DataQueue, RefusedReadsChangeNothing) {
    DataQueue queue;
    queue.WriteCopy("abc", 3);
    EXPECT_EQ(readText(queue, 4), "(refused)");
    EXPECT_FALSE(queue.Read(nullptr, 1));
    char byte = 'x';
    EXPECT_FALSE(queue.Read(&byte, 0));
    EXPECT_FALSE(queue.Read(&byte, -1));
    EXPECT_EQ(byte, 'x');
    EXPECT_EQ(readText(queue, 3), "abc");
}

TEST(DataQueue, TakesBuffersOverOnlyWhenItAcceptsThem) {
    DataQueue queue;
    char* refused = new char[1];
    EXPECT_FALSE(queue.Write(refused, 0));
    EXPECT_FALSE(queue.Write(nullptr, 1));
    delete[] refused;
    EXPECT_FALSE(queue.WriteCopy(nullptr, 1));
    EXPECT_FALSE(queue.WriteCopy("a", -1));
    EXPECT_TRUE(queue.Write(new char[2]{'o', 'k'}, 2));
    EXPECT_EQ(readText(queue, 2), "ok");
}

TEST(DataQueue, FlushForgetsAHalfReadChunk) {
    DataQueue queue;
    queue.Flush();
    queue.WriteCopy("abc", 3);
    EXPECT_EQ(readText(queue, 1), "a");
    queue.Flush();
    EXPECT_EQ(queue.Size(), 0);
    queue.WriteCopy("xyz", 3);
    EXPECT_EQ(readText(queue, 3), "xyz");
}

}  // namespace
