// SPDX-License-Identifier: GPL-3.0-or-later
#include "net/IPv4Address.h"

namespace Net {

IPv4Address::IPv4Address(unsigned char first, unsigned char second, unsigned char third, unsigned char fourth)
    : m_Bytes{first, second, third, fourth} {}

IPv4Address::IPv4Address(const unsigned char* bytes) : m_Bytes{bytes[0], bytes[1], bytes[2], bytes[3]} {}

}  // namespace Net
