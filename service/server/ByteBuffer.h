// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace service {

/** Bytes on their way through a socket: appended at the back, taken from the front, contiguous in between. */
class ByteBuffer {
  public:
    /** What waits; valid until the next change. */
    std::span<const std::uint8_t> bytes() const { return std::span(m_Bytes).subspan(m_Taken); }
    std::size_t size() const { return m_Bytes.size() - m_Taken; }
    bool empty() const { return size() == 0; }

    void append(std::span<const std::uint8_t> bytes) {
        m_Bytes.insert(m_Bytes.end(), bytes.begin(), bytes.end());
    }

    /** Drops `count` bytes from the front, at most `size()`. An emptied buffer gives its memory back. */
    void take(std::size_t count);

  private:
    std::vector<std::uint8_t> m_Bytes;
    std::size_t m_Taken = 0;  ///< bytes at the front of m_Bytes that are gone already
};

}  // namespace service
