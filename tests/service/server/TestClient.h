// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <sys/time.h>

#include <array>
#include <cstdint>
#include <optional>
#include <span>

#include "service/server/ByteBuffer.h"
#include "service/server/FileDescriptor.h"
#include "service/server/ListenAddress.h"
#include "tests/service/server/RequestFrame.h"

namespace service {

/** A front end's end of the link in plain blocking calls, which give up after ten seconds. */
class TestClient {
  public:
    struct Frame {
        MessageHeader header;
        std::vector<std::uint8_t> body;
    };

    explicit TestClient(const ListenAddress& address) : m_Socket(::socket(AF_INET, SOCK_STREAM, 0)) {
        const timeval patience{.tv_sec = 10, .tv_usec = 0};
        ::setsockopt(m_Socket.get(), SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof patience);
        ::setsockopt(m_Socket.get(), SOL_SOCKET, SO_SNDTIMEO, &patience, sizeof patience);
        sockaddr_in where{};
        where.sin_family = AF_INET;
        where.sin_addr = address.address;
        where.sin_port = htons(address.port);
        EXPECT_EQ(::connect(m_Socket.get(), reinterpret_cast<const sockaddr*>(&where), sizeof where), 0);
    }

    /** False when the connection does not take all of it. */
    bool send(std::span<const std::uint8_t> bytes) {
        const ssize_t count = ::send(m_Socket.get(), bytes.data(), bytes.size(), MSG_NOSIGNAL);
        return count == static_cast<ssize_t>(bytes.size());
    }

    /** Says that no more requests follow. */
    void finishSending() { ::shutdown(m_Socket.get(), SHUT_WR); }

    /** The next frame; nothing when the connection has ended. */
    std::optional<Frame> read() {
        while (true) {
            if (std::optional<Frame> frame = takeFrame()) {
                return frame;
            }
            std::array<std::uint8_t, 65536> chunk;
            const ssize_t count = ::recv(m_Socket.get(), chunk.data(), chunk.size(), 0);
            if (count <= 0) {
                EXPECT_FALSE(count < 0 && errno == EAGAIN) << "waited for ten seconds";
                return std::nullopt;
            }
            m_Received.append(std::span(chunk).first(static_cast<std::size_t>(count)));
        }
    }

    template <class Request>
    std::optional<Frame> ask(const Request& request) {
        return send(requestFrame(0, request)) ? read() : std::nullopt;
    }

  private:
    std::optional<Frame> takeFrame() {
        constexpr std::size_t headerSize = 20;
        const std::span<const std::uint8_t> bytes = m_Received.bytes();
        Frame frame;
        BinarySerializer header;
        if (bytes.size() < headerSize || !header.WriteData(bytes.data(), headerSize) ||
            !frame.header.UnserializeFrom(header)) {
            return std::nullopt;
        }
        const std::size_t size = headerSize + static_cast<std::size_t>(frame.header.dataSize);
        if (bytes.size() < size) {
            return std::nullopt;
        }
        frame.body.assign(bytes.begin() + headerSize, bytes.begin() + static_cast<std::ptrdiff_t>(size));
        m_Received.take(size);
        return frame;
    }

    FileDescriptor m_Socket;
    ByteBuffer m_Received;
};

}  // namespace service
