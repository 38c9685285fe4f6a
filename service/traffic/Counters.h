// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace service {

/** How traffic is told apart. Stored in the database: never renumber. */
enum class ProtocolClass : std::uint8_t { Tcp = 0, Udp = 1, Other = 2 };

inline constexpr std::size_t protocolClassCount = 3;

/** The class of an IP protocol number as sockets carry it (6 TCP, 17 UDP). */
constexpr ProtocolClass protocolClassOf(int socketProtocol) {
    return socketProtocol == 6    ? ProtocolClass::Tcp
           : socketProtocol == 17 ? ProtocolClass::Udp
                                  : ProtocolClass::Other;
}

/** Bytes moved in both directions. */
struct ByteCount {
    std::int64_t received = 0;
    std::int64_t sent = 0;

    ByteCount& operator+=(const ByteCount& other) {
        received += other.received;
        sent += other.sent;
        return *this;
    }
    bool operator==(const ByteCount&) const = default;
};

/**
 * Cumulative bytes per protocol class: those at the IP layer, headers included, which are what a network interface
 * shows and what every figure means unless it says otherwise, and beside them those of the payload.
 */
struct Counters {
    std::array<ByteCount, protocolClassCount> byClass;
    std::array<ByteCount, protocolClassCount> payloadByClass;

    void add(ProtocolClass protocolClass, const ByteCount& moved, const ByteCount& payload) {
        byClass[static_cast<std::size_t>(protocolClass)] += moved;
        payloadByClass[static_cast<std::size_t>(protocolClass)] += payload;
    }
    Counters& operator+=(const Counters& other) {
        for (std::size_t i = 0; i < protocolClassCount; ++i) {
            byClass[i] += other.byClass[i];
            payloadByClass[i] += other.payloadByClass[i];
        }
        return *this;
    }
    ByteCount& operator[](ProtocolClass protocolClass) {
        return byClass[static_cast<std::size_t>(protocolClass)];
    }
    const ByteCount& operator[](ProtocolClass protocolClass) const {
        return byClass[static_cast<std::size_t>(protocolClass)];
    }
    ByteCount total() const {
        ByteCount sum;
        for (const ByteCount& bytes : byClass) {
            sum += bytes;
        }
        return sum;
    }
    bool operator==(const Counters&) const = default;
};

}  // namespace service
