// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "service/ledger/Records.h"
#include "service/store/connections/PackedNumbers.h"
#include "service/store/connections/Slots.h"

namespace SQLite {
class Query;
}

namespace service {

/** What a list of connections is filtered and sorted by, as numbers that compare as the values do. */
enum class ConnectionNumber : std::size_t {
    Started,
    Ended,
    Application,
    Protocol,
    Direction,
    Received,
    Sent,
    Local,  ///< an address is three numbers, see `addressNumbers`
    Remote = Local + 3,
};

inline constexpr std::size_t connectionNumberCount = 13;
using ConnectionNumbers = std::array<std::uint64_t, connectionNumberCount>;

/** A number out of a column that may be negative, and back. */
constexpr std::uint64_t toNumber(std::int64_t value) {
    return static_cast<std::uint64_t>(value) ^ std::uint64_t{1} << 63;
}
constexpr std::int64_t fromNumber(std::uint64_t number) {
    return static_cast<std::int64_t>(number ^ std::uint64_t{1} << 63);
}

/**
 * Family, address and port out of a blob as `toColumn` makes it: the first number begins with the family, the last,
 * which is less than 2^24, ends with the port. An IPv4 address is in the first; of IPv6 seven bytes are in the
 * first, eight in the second and one in the last.
 */
std::array<std::uint64_t, 3> addressNumbers(std::span<const std::uint8_t> blob);

/** The columns of a connection's row in the order that `connectionNumbers` expects. */
inline constexpr char connectionNumberColumns[] =
    "id, started, ended, application, protocol, direction, received, sent, local, remote";

/** The numbers of the row on which a query over those columns stands. */
ConnectionNumbers connectionNumbers(const SQLite::Query& row);

/** What is kept together, because who asks for one of a column's numbers needs them all. */
struct ConnectionColumn {
    const char* table;
    std::size_t firstNumber;
    std::size_t count;
};

inline constexpr std::array<ConnectionColumn, 6> connectionColumns{{
    {"connection_times", 0, 2},     // start and end
    {"connection_kinds", 2, 3},     // application, protocol, direction
    {"connection_received", 5, 1},  //
    {"connection_sent", 6, 1},
    {"connection_local", 7, 3},
    {"connection_remote", 10, 3},
}};

/** The column that holds a number. */
constexpr std::size_t columnOf(ConnectionNumber number) {
    std::size_t column = 0;
    while (static_cast<std::size_t>(number) >=
           connectionColumns[column].firstNumber + connectionColumns[column].count) {
        ++column;
    }
    return column;
}

/** One column of a block, read where it lies. */
struct PackedColumn {
    std::array<PackedNumbers, 3> numbers;

    /** False when the bytes are damaged. */
    bool read(std::size_t column, std::span<const std::uint8_t> bytes);
};

/** Up to 256 connections with neighbouring ids, unpacked. */
class ConnectionBlock {
  public:
    /** Ids from `Slots::count` times the block's number on. */
    static constexpr std::int32_t blockOf(ConnectionId id) { return id / Slots::count; }
    static constexpr int slotOf(ConnectionId id) { return id % Slots::count; }
    static constexpr ConnectionId idAt(std::int32_t block, int slot) { return block * Slots::count + slot; }

    const Slots& slots() const { return m_Slots; }

    void put(int slot, const ConnectionNumbers& numbers);
    void remove(int slot) { m_Slots.remove(slot); }

    std::uint64_t number(ConnectionNumber number, int slot) const {
        return m_Numbers[static_cast<std::size_t>(number)][static_cast<std::size_t>(slot)];
    }

    /** The smallest and the greatest among the block's connections, of which there must be one. */
    std::uint64_t smallest(ConnectionNumber number) const;
    std::uint64_t greatest(ConnectionNumber number) const;

    void setSlots(const Slots& slots) { m_Slots = slots; }
    bool unpack(std::size_t column, std::span<const std::uint8_t> bytes);
    std::vector<std::uint8_t> pack(std::size_t column) const;

  private:
    Slots m_Slots;
    std::array<PackedNumbers::Numbers, connectionNumberCount> m_Numbers{};
};

}  // namespace service
