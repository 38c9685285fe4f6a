// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <gtest/gtest.h>

#include "tests/support/LinkPeer.h"

/**
 * A test of what talks to the daemon through the shared connection. That is one per process and its port is fixed, so
 * every case runs in a process and a network of its own; where the system allows none, it is skipped before it begins.
 */
class DaemonTest : public testing::Test {
  public:
    static constexpr unsigned short daemonPort = 10023;

    /** A request as the message that it is. */
    template <class Message>
    static Message read(const LinkPeer::Request& request) {
        BinarySerializer data;
        data.WriteCopy(request.body.data(), static_cast<int>(request.body.size()));
        Message message;
        EXPECT_TRUE(message.UnserializeFrom(data));
        return message;
    }

    /** The integer of the link at `offset` bytes into `body`. */
    static std::int32_t intAt(const std::string& body, std::size_t offset) {
        BinarySerializer data;
        data.WriteCopy(body.data() + offset, 4);
        int value = 0;
        EXPECT_TRUE(data.ReadInt(value));
        return value;
    }

  protected:
    void SetUp() final;

    /** A subclass's own set-up. */
    virtual void begin() {}
};
