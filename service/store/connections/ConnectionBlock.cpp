// SPDX-License-Identifier: GPL-3.0-or-later
#include "service/store/connections/ConnectionBlock.h"

#include <algorithm>

#include "libs/sqlite/Query.h"

namespace service {

namespace {

constexpr std::size_t ipv4BlobSize = 7;
constexpr std::size_t ipv6BlobSize = 19;

/** The higher byte first. */
std::uint64_t numberOf(std::span<const std::uint8_t> bytes) {
    std::uint64_t number = 0;
    for (const std::uint8_t byte : bytes) {
        number = number << 8 | byte;
    }
    return number;
}

}  // namespace

std::array<std::uint64_t, 3> addressNumbers(std::span<const std::uint8_t> blob) {
    if (blob.size() < 3) {
        return {};
    }
    if (blob.size() == ipv6BlobSize) {
        return {numberOf(blob.first(8)), numberOf(blob.subspan(8, 8)), numberOf(blob.subspan(16))};
    }
    const auto portAt = std::min(blob.size(), ipv4BlobSize) - 2;
    return {std::uint64_t{blob.front()} << 56 | numberOf(blob.subspan(1, portAt - 1)), 0,
            numberOf(blob.subspan(portAt, 2))};
}

ConnectionNumbers connectionNumbers(const SQLite::Query& row) {
    ConnectionNumbers numbers{};
    constexpr int firstColumn = 1;  // after the id
    constexpr auto local = static_cast<std::size_t>(ConnectionNumber::Local);
    for (std::size_t i = 0; i < local; ++i) {
        numbers[i] = toNumber(row.GetColumnAsInt64(firstColumn + static_cast<int>(i)));
    }
    constexpr int localColumn = firstColumn + static_cast<int>(local);
    std::ranges::copy(addressNumbers(row.GetColumnBytes(localColumn)), numbers.begin() + local);
    std::ranges::copy(addressNumbers(row.GetColumnBytes(localColumn + 1)), numbers.begin() + local + 3);
    return numbers;
}

bool PackedColumn::read(std::size_t column, std::span<const std::uint8_t> bytes) {
    for (std::size_t i = 0; i < connectionColumns[column].count; ++i) {
        if (!numbers[i].take(bytes)) {
            return false;
        }
    }
    return true;
}

void ConnectionBlock::put(int slot, const ConnectionNumbers& numbers) {
    m_Slots.add(slot);
    for (std::size_t i = 0; i < connectionNumberCount; ++i) {
        m_Numbers[i][static_cast<std::size_t>(slot)] = numbers[i];
    }
}

std::uint64_t ConnectionBlock::smallest(ConnectionNumber which) const {
    std::uint64_t found = ~std::uint64_t{0};
    m_Slots.forEach([&](int slot) { found = std::min(found, number(which, slot)); });
    return found;
}

std::uint64_t ConnectionBlock::greatest(ConnectionNumber which) const {
    std::uint64_t found = 0;
    m_Slots.forEach([&](int slot) { found = std::max(found, number(which, slot)); });
    return found;
}

bool ConnectionBlock::unpack(std::size_t column, std::span<const std::uint8_t> bytes) {
    PackedColumn packed;
    if (!packed.read(column, bytes)) {
        return false;
    }
    const ConnectionColumn& from = connectionColumns[column];
    for (std::size_t i = 0; i < from.count; ++i) {
        m_Slots.forEach([&](int slot) {
            m_Numbers[from.firstNumber + i][static_cast<std::size_t>(slot)] = packed.numbers[i][slot];
        });
    }
    return true;
}

std::vector<std::uint8_t> ConnectionBlock::pack(std::size_t column) const {
    std::vector<std::uint8_t> bytes;
    const ConnectionColumn& from = connectionColumns[column];
    for (std::size_t i = 0; i < from.count; ++i) {
        PackedNumbers::pack(m_Numbers[from.firstNumber + i], m_Slots, bytes);
    }
    bytes.resize(bytes.size() + PackedNumbers::padding);
    return bytes;
}

}  // namespace service
