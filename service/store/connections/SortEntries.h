// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <utility>

namespace service {

/** Several numbers that are compared one after the other. */
template <std::size_t size>
using SortEntry = std::array<std::uint64_t, size>;

/** Byte 0 is the highest of the first number. */
template <std::size_t size>
std::size_t byteOf(const SortEntry<size>& entry, std::size_t byte) {
    return entry[byte / 8] >> (56 - 8 * (byte % 8)) & 0xff;
}

/** The first byte in which not all of the entries are equal; the number of bytes when there is none. */
template <std::size_t size>
std::size_t firstDifference(std::span<const SortEntry<size>> entries) {
    SortEntry<size> differences{};
    for (const SortEntry<size>& entry : entries) {
        for (std::size_t i = 0; i < size; ++i) {
            differences[i] |= entry[i] ^ entries.front()[i];
        }
    }
    std::size_t byte = 0;
    while (byte < 8 * size && byteOf(differences, byte) == 0) {
        ++byte;
    }
    return byte;
}

/**
 * Sorts in place, byte by byte from the highest that differs (an American flag sort): three to four times as fast
 * as comparing where there are a million entries.
 */
template <std::size_t size>
void sortEntries(std::span<SortEntry<size>> entries) {
    constexpr std::size_t few = 64;
    if (entries.size() <= few) {
        std::ranges::sort(entries);
        return;
    }
    const std::size_t byte = firstDifference(std::span<const SortEntry<size>>(entries));
    if (byte == 8 * size) {
        return;
    }
    std::array<std::size_t, 257> begins{};
    for (const SortEntry<size>& entry : entries) {
        ++begins[byteOf(entry, byte) + 1];
    }
    for (std::size_t value = 0; value < 256; ++value) {
        begins[value + 1] += begins[value];
    }
    auto next = begins;
    for (std::size_t value = 0; value < 256; ++value) {
        while (next[value] < begins[value + 1]) {
            SortEntry<size>& entry = entries[next[value]];
            const std::size_t target = byteOf(entry, byte);
            std::swap(entry, entries[next[target]]);
            ++next[target];
        }
    }
    for (std::size_t value = 0; value < 256; ++value) {
        sortEntries(entries.subspan(begins[value], begins[value + 1] - begins[value]));
    }
}

}  // namespace service
