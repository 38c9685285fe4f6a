// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <array>

namespace Net {

/** Four bytes of an IPv4 address in network order: the first byte is the first dotted component. */
class IPv4Address {
  public:
    IPv4Address(unsigned char first, unsigned char second, unsigned char third, unsigned char fourth);

    /** Copies four bytes. */
    explicit IPv4Address(const unsigned char* bytes);

    bool operator==(const IPv4Address&) const = default;

    const unsigned char* GetBytes() const { return m_Bytes.data(); }

  private:
    std::array<unsigned char, 4> m_Bytes;
};

}  // namespace Net
