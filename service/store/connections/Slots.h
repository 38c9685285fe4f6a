// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>

namespace service {

static_assert(std::endian::native == std::endian::little, "numbers are kept as they lie in memory");

/** Which of the places of a block are taken. */
class Slots {
  public:
    static constexpr int count = 256;

    void add(int slot) { word(slot) |= bit(slot); }
    void remove(int slot) { word(slot) &= ~bit(slot); }
    bool has(int slot) const { return (m_Words[static_cast<std::size_t>(slot) / 64] & bit(slot)) != 0; }
    bool isEmpty() const { return m_Words == decltype(m_Words){}; }

    int size() const {
        int size = 0;
        for (const std::uint64_t word : m_Words) {
            size += std::popcount(word);
        }
        return size;
    }

    /** Calls `visit(slot)` for each, in ascending order. */
    template <class Visit>
    void forEach(Visit visit) const {
        for (int first = 0; first < count; first += 64) {
            std::uint64_t rest = m_Words[static_cast<std::size_t>(first) / 64];
            for (; rest != 0; rest &= rest - 1) {
                visit(first + std::countr_zero(rest));
            }
        }
    }

    template <class Predicate>
    void keepIf(Predicate predicate) {
        Slots kept;
        forEach([&](int slot) {
            if (predicate(slot)) {
                kept.add(slot);
            }
        });
        *this = kept;
    }

    /** Bit n of byte m is slot 8 m + n. */
    using Bytes = std::array<std::uint8_t, count / 8>;
    Bytes toBytes() const { return std::bit_cast<Bytes>(m_Words); }

    /** None where there are not as many bytes as `toBytes` gives. */
    static Slots fromBytes(std::span<const std::uint8_t> bytes) {
        Slots slots;
        if (bytes.size() == sizeof slots.m_Words) {
            std::memcpy(slots.m_Words.data(), bytes.data(), bytes.size());
        }
        return slots;
    }

    bool operator==(const Slots&) const = default;

  private:
    static constexpr std::uint64_t bit(int slot) { return std::uint64_t{1} << slot % 64; }
    std::uint64_t& word(int slot) { return m_Words[static_cast<std::size_t>(slot) / 64]; }

    std::array<std::uint64_t, count / 64> m_Words{};
};

}  // namespace service
