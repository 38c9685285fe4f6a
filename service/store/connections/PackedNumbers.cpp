// SPDX-License-Identifier: GPL-3.0-or-later
#include "service/store/connections/PackedNumbers.h"

#include <algorithm>
#include <bit>
#include <limits>

namespace service {

namespace {

constexpr std::size_t numberSize = sizeof(std::uint64_t);
constexpr std::size_t headSize = 1 + numberSize;
constexpr std::uint8_t differentOnes = 9;  ///< in place of a width

constexpr std::uint64_t maskOf(std::size_t width) {
    return width == 0 ? 0 : ~std::uint64_t{0} >> (64 - 8 * width);
}

void append(std::vector<std::uint8_t>& bytes, std::uint64_t number) {
    const auto raw = std::bit_cast<std::array<std::uint8_t, numberSize>>(number);
    bytes.insert(bytes.end(), raw.begin(), raw.end());
}

/** The numbers of `slots`, each once, ascending. */
std::vector<std::uint64_t> differentNumbers(const PackedNumbers::Numbers& numbers, const Slots& slots) {
    std::vector<std::uint64_t> different;
    slots.forEach([&](int slot) { different.push_back(numbers[static_cast<std::size_t>(slot)]); });
    std::ranges::sort(different);
    different.erase(std::ranges::unique(different).begin(), different.end());
    return different;
}

}  // namespace

void PackedNumbers::pack(const Numbers& numbers, const Slots& slots, std::vector<std::uint8_t>& bytes) {
    const std::vector<std::uint64_t> different = differentNumbers(numbers, slots);
    const std::uint64_t smallest = different.empty() ? 0 : different.front();
    const std::uint64_t range = different.empty() ? 0 : different.back() - smallest;
    std::size_t width = (std::bit_width(range) + 7u) / 8;
    const bool isShorter = different.size() * numberSize + Slots::count < width * Slots::count;
    bytes.push_back(isShorter ? differentOnes : static_cast<std::uint8_t>(width));
    append(bytes, isShorter ? different.size() : smallest);
    if (isShorter) {
        width = 1;
        std::ranges::for_each(different, [&bytes](std::uint64_t number) { append(bytes, number); });
    }
    const std::size_t begin = bytes.size();
    bytes.resize(begin + width * Slots::count);
    slots.forEach([&](int slot) {
        const std::uint64_t number = numbers[static_cast<std::size_t>(slot)];
        const auto place =
            static_cast<std::uint64_t>(std::ranges::lower_bound(different, number) - different.begin());
        const std::uint64_t code = isShorter ? place : number - smallest;
        std::memcpy(bytes.data() + begin + static_cast<std::size_t>(slot) * width, &code, width);
    });
}

bool PackedNumbers::take(std::span<const std::uint8_t>& bytes) {
    *this = {};
    if (bytes.size() < headSize + padding || bytes[0] > differentOnes) {
        return false;
    }
    if (bytes[0] == differentOnes) {
        return takeDifferent(bytes);
    }
    const std::size_t size = headSize + bytes[0] * std::size_t{Slots::count};
    if (bytes.size() < size + padding) {
        return false;
    }
    m_Width = bytes[0];
    m_Mask = maskOf(m_Width);
    m_Smallest = read(&bytes[1]);
    m_Greatest = m_Smallest + std::min(m_Mask, std::numeric_limits<std::uint64_t>::max() - m_Smallest);
    m_Codes = bytes.data() + headSize;
    bytes = bytes.subspan(size);
    return true;
}

bool PackedNumbers::takeDifferent(std::span<const std::uint8_t>& bytes) {
    const std::uint64_t count = read(&bytes[1]);
    const std::size_t size = headSize + count * numberSize + Slots::count;
    if (count == 0 || count > Slots::count || bytes.size() < size + padding) {
        return false;
    }
    const auto codes = bytes.subspan(headSize + count * numberSize, Slots::count);
    if (*std::ranges::max_element(codes) >= count) {
        return false;
    }
    m_Width = 1;
    m_Mask = maskOf(1);
    m_Codes = codes.data();
    m_Different = bytes.data() + headSize;
    m_Smallest = read(m_Different);
    m_Greatest = read(m_Different + (count - 1) * numberSize);
    bytes = bytes.subspan(size);
    return true;
}

}  // namespace service
