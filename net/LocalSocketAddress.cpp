// SPDX-License-Identifier: GPL-3.0-or-later
#include "net/LocalSocketAddress.h"

#include <algorithm>

namespace Net {

LocalSocketAddress::LocalSocketAddress(const std::string& path) : SocketAddress(Local, nullptr, 4) {
    m_Image.resize(std::max(m_Image.size(), path.size() + 3));
    std::copy(path.begin(), path.end(), m_Image.begin() + 2);
}

std::string LocalSocketAddress::GetPath() const {
    return std::string(m_Image.begin() + 2, std::find(m_Image.begin() + 2, m_Image.end(), '\0'));
}

}  // namespace Net
