// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>
#include <vector>

#include "service/store/connections/Slots.h"

namespace service {

/**
 * The numbers of one block, packed in the shorter of two ways: how far each is above the smallest, in as few bytes
 * as the greatest needs; or, where few are different, which of those it is.
 *
 *     1 byte     width, 0 to 8          1 byte     9
 *     8 bytes    the smallest           8 bytes    how many are different, 1 to 256
 *     256 x width bytes                 8 bytes each, ascending
 *                                       256 x 1 byte
 *
 * All of them little-endian. Behind the last of a column stand `padding` more bytes, so that any number can be
 * read in one piece of eight. This class looks into bytes that it does not own.
 */
class PackedNumbers {
  public:
    using Numbers = std::array<std::uint64_t, Slots::count>;

    static constexpr std::size_t padding = 8;

    /** Appends the numbers of `slots`; what stands in other places is not kept. */
    static void pack(const Numbers& numbers, const Slots& slots, std::vector<std::uint8_t>& bytes);

    /** Takes packed numbers off the front of `bytes`; holds zeros only, and false, when they are damaged. */
    bool take(std::span<const std::uint8_t>& bytes);

    std::uint64_t operator[](int slot) const {
        const std::uint64_t code = read(m_Codes + static_cast<std::size_t>(slot) * m_Width) & m_Mask;
        return m_Different == nullptr ? m_Smallest + code : read(m_Different + code * sizeof(std::uint64_t));
    }

    /** All of the numbers lie between these two. */
    std::uint64_t smallest() const { return m_Smallest; }
    std::uint64_t greatest() const { return m_Greatest; }

  private:
    static std::uint64_t read(const std::uint8_t* bytes) {
        std::uint64_t number = 0;
        std::memcpy(&number, bytes, sizeof number);
        return number;
    }

    bool takeDifferent(std::span<const std::uint8_t>& bytes);

    static constexpr std::array<std::uint8_t, padding> zeros{};

    std::uint64_t m_Smallest = 0;
    std::uint64_t m_Greatest = 0;
    std::uint64_t m_Mask = 0;
    std::size_t m_Width = 0;
    const std::uint8_t* m_Codes = zeros.data();
    const std::uint8_t* m_Different = nullptr;
};

}  // namespace service
