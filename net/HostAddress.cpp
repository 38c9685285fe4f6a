// SPDX-License-Identifier: GPL-3.0-or-later
#include "net/HostAddress.h"

#include <algorithm>
#include <cstddef>
#include <cstring>

namespace Net {

namespace {

// On BSD the family is one byte behind the length byte, on Linux it takes both; the data follows either way.
constexpr std::size_t headerLength = offsetof(sockaddr, sa_data);
static_assert(headerLength == 2);

}  // namespace

HostAddress::HostAddress() : m_Length(sizeof m_Storage) {}

HostAddress::HostAddress(const SocketAddress& address) {
    const auto dataLength = std::min<std::size_t>(address.GetDataLength(), sizeof m_Storage - headerLength);
    std::memcpy(reinterpret_cast<char*>(&m_Storage) + headerLength, address.GetData(), dataLength);
    m_Length = static_cast<socklen_t>(headerLength + dataLength);
    m_Storage.ss_family = static_cast<sa_family_t>(address.GetFamily());
#ifdef __APPLE__
    m_Storage.ss_len = static_cast<unsigned char>(m_Length);
#endif
}

SocketAddress HostAddress::ToSocketAddress() const {
    const int dataLength = std::max<int>(0, static_cast<int>(m_Length) - static_cast<int>(headerLength));
    return SocketAddress(static_cast<AddressFamily>(m_Storage.ss_family),
                         reinterpret_cast<const char*>(&m_Storage) + headerLength, dataLength);
}

}  // namespace Net
