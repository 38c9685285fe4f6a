// SPDX-License-Identifier: GPL-3.0-or-later
#include "net/IPv4SocketAddress.h"

#include <algorithm>

namespace Net {

namespace {

constexpr int dataLength = 14;    // port, address and eight bytes of zero
constexpr int addressOffset = 2;  // within the data, behind the port

}  // namespace

IPv4SocketAddress::IPv4SocketAddress() : SocketAddress(IPv4, nullptr, dataLength) {}

IPv4SocketAddress::IPv4SocketAddress(const IPv4Address& address, unsigned short port) : IPv4SocketAddress() {
    GetData()[0] = static_cast<unsigned char>(port >> 8);
    GetData()[1] = static_cast<unsigned char>(port & 0xFF);
    std::copy_n(address.GetBytes(), 4, GetData() + addressOffset);
}

IPv4SocketAddress& IPv4SocketAddress::operator=(const IPv4SocketAddress& /*other*/) {
    return *this;
}

unsigned short IPv4SocketAddress::GetPort() const {
    return static_cast<unsigned short>(GetData()[0] << 8 | GetData()[1]);
}

IPv4Address IPv4SocketAddress::GetIPAddress() const {
    return IPv4Address(GetData() + addressOffset);
}

}  // namespace Net
