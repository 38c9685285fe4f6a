// SPDX-License-Identifier: GPL-3.0-or-later
#include "net/SocketAddress.h"

#include <algorithm>
#include <cstring>

namespace Net {

namespace {

constexpr int headerLength = 2;
constexpr int localImageLength = 106;  // sizeof(sockaddr_un) on BSD: two header bytes and 104 of path
constexpr int longestData = 255 - headerLength;

}  // namespace

SocketAddress::SocketAddress() : SocketAddress(Local, nullptr, localImageLength - headerLength) {}

SocketAddress::SocketAddress(AddressFamily family, const void* data, int dataLength) {
    const int length = std::clamp(dataLength, 0, longestData);
    m_Image.resize(length + headerLength);
    m_Image[0] = static_cast<unsigned char>(length + headerLength);
    m_Image[1] = static_cast<unsigned char>(family);
    if (data != nullptr) {
        std::memcpy(GetData(), data, length);
    }
}

SocketAddress::SocketAddress(const sockaddr* image) {
    const auto* bytes = reinterpret_cast<const unsigned char*>(image);
    m_Image.assign(bytes, bytes + std::max<int>(bytes[0], headerLength));
    m_Image[0] = static_cast<unsigned char>(m_Image.size());
}

SocketAddress::SocketAddress(const SocketAddress& other) {
    *this = other;
}

SocketAddress& SocketAddress::operator=(const SocketAddress& other) {
    if (this == &other) {
        return *this;
    }
    const auto first = other.m_Image.begin();
    const auto last = first + other.m_Image[0];
    if (!m_Image.empty() && m_Image[0] >= other.m_Image[0]) {
        std::copy(first, last, m_Image.begin());
    } else {
        m_Image.assign(first, last);
    }
    return *this;
}

}  // namespace Net
