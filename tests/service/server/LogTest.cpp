// SPDX-License-Identifier: GPL-3.0-or-later
#include "service/log/Log.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <array>

#include "service/system/FileDescriptor.h"

namespace service {

/** Standard error is a pipe whose other end the test holds. */
class LogTest : public ::testing::Test {
  protected:
    LogTest() {
        std::array<int, 2> ends{};
        EXPECT_EQ(::pipe2(ends.data(), O_CLOEXEC), 0);
        m_Reader = FileDescriptor(ends[0]);
        ::fcntl(m_Reader.get(), F_SETFL, O_NONBLOCK);
        ::dup2(ends[1], STDERR_FILENO);
        ::close(ends[1]);
    }
    ~LogTest() override { ::dup2(m_Before.get(), STDERR_FILENO); }

    /** What was written since the last call. */
    std::string written() {
        std::string text;
        std::array<char, 65536> chunk;
        ssize_t count = 0;
        while ((count = ::read(m_Reader.get(), chunk.data(), chunk.size())) > 0) {
            text.append(chunk.data(), static_cast<std::size_t>(count));
        }
        return text;
    }

  private:
    FileDescriptor m_Before{::dup(STDERR_FILENO)};
    FileDescriptor m_Reader;
};

TEST_F(LogTest, GoesOnWhenNobodyReadsItAndSaysHowManyLinesWereLost) {
    constexpr int count = 100;
    const std::string longText(5000, 'x');
    for (int i = 0; i < count; ++i) {
        logLine(longText);
    }
    const auto kept = std::ranges::count(written(), '\n');
    EXPECT_GT(kept, 0);
    EXPECT_LT(kept, count);
    logLine("read again");
    const std::string after = written();
    EXPECT_NE(after.find("no room: " + std::to_string(count - kept) + "\n"), std::string::npos) << after;
    EXPECT_NE(after.find("read again\n"), std::string::npos) << after;
    logLine("and again");
    EXPECT_EQ(written(), "nevtora-daemon: and again\n");
}

TEST_F(LogTest, LeavesOutWhatPeersCauseTooOftenAndSaysHowMuch) {
    constexpr int count = 1000;
    for (int i = 0; i < count; ++i) {
        logPeerLine("client ", i);
    }
    logLine("something else");
    std::string text = written();
    const auto lines = std::ranges::count(text, '\n');
    EXPECT_LE(lines, 20) << "five each second, and one of the daemon's own";
    EXPECT_NE(text.find("something else"), std::string::npos);
    ::usleep(1'010'000);
    logLeftOutLines();
    text = written();
    EXPECT_NE(text.find("left out: "), std::string::npos) << text;
    logPeerLine("client again");
    EXPECT_EQ(written(), "nevtora-daemon: client again\n");
}

}  // namespace service
