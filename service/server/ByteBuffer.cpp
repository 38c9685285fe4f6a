// SPDX-License-Identifier: GPL-3.0-or-later
#include "service/server/ByteBuffer.h"

namespace service {

void ByteBuffer::take(std::size_t count) {
    m_Taken += count;
    if (m_Taken == m_Bytes.size()) {
        m_Bytes = {};
        m_Taken = 0;
    } else if (m_Taken > m_Bytes.size() / 2) {  // moving only then keeps the cost per byte constant
        m_Bytes.erase(m_Bytes.begin(), m_Bytes.begin() + static_cast<std::ptrdiff_t>(m_Taken));
        m_Taken = 0;
    }
}

}  // namespace service
