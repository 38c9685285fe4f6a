// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

/** An IPv4 or IPv6 address with a port. */
class IpAddress {
  public:
    static constexpr std::int32_t IPv4 = 0;
    static constexpr std::int32_t IPv6 = 1;

    std::int32_t family = IPv4;  ///< any other value than the two above: an address of unknown kind
    std::uint16_t port = 0;      ///< host order
    std::array<std::uint8_t, 16> address{};  ///< network order; IPv4 uses the first four bytes, the rest is 0

    /** How many bytes of `address` a family uses: 4, 16, or 0 for an unknown one. */
    static std::size_t addressLength(std::int32_t family);

    /** 0.0.0.0 with port 0. An IPv6 address is never empty. */
    bool isEmpty() const;

    /** Compares family, port and the bytes that the family uses. */
    bool operator==(const IpAddress& other) const;

    /** 24 bytes: family, port widened to 32 bits, all 16 address bytes. False at the first field that fails.
     */
    template <class Serializer>
    bool SerializeTo(Serializer& serializer) const {
        return serializer.WriteInt(family) && serializer.WriteInt(port) &&
               serializer.WriteData(address.data(), static_cast<int>(address.size()));
    }

    template <class Serializer>
    bool UnserializeFrom(Serializer& serializer) {
        std::int32_t wirePort = 0;
        if (!serializer.ReadInt(family) || !serializer.ReadInt(wirePort)) {
            return false;
        }
        port = static_cast<std::uint16_t>(wirePort);
        return serializer.ReadData(address.data(), static_cast<int>(address.size()));
    }
};
