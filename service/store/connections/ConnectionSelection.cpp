// SPDX-License-Identifier: GPL-3.0-or-later
#include "service/store/connections/ConnectionSelection.h"

#include <algorithm>
#include <limits>

#include "service/store/columns/Columns.h"

namespace service {

namespace {

using SQLite::StepResult;

constexpr int lifeColumnIndex = 10;

}  // namespace

ConnectionSelection::ConnectionSelection(SQLite::Database& database)
    : m_Database(database),
      m_KeptSince(database, "SELECT kept_since FROM counting"),
      m_Heads(database,
              "SELECT block, slots, first_started, last_started, first_ended, last_ended "
              "FROM connection_blocks ORDER BY block"),
      m_Apart(database,
              std::string("SELECT ") + connectionNumberColumns + ", life FROM connections WHERE life >= 33"),
      m_Readers{{{database, 0}, {database, 1}, {database, 2}, {database, 3}, {database, 4}, {database, 5}}} {}

bool ConnectionSelection::isValid() const {
    return m_KeptSince.IsValid() && m_Heads.IsValid() && m_Apart.IsValid() &&
           std::ranges::all_of(m_Readers, &BlockReader::isValid);
}

bool ConnectionSelection::select(const ConnectionQuery& query, const std::stop_token& stop) {
    clear();
    m_Stop = stop;
    m_LastError.clear();
    std::uint64_t since = 0;
    return readSince(query, since) && selectBlocks(query, since) && selectApart(query, since) &&
           checkTimes(since, toNumber(toColumn(query.to))) && checkKinds(query);
}

void ConnectionSelection::clear() {
    std::ranges::for_each(m_Readers, &BlockReader::reset);
    m_SelectedBlocks = std::vector<Block>();  // braces alone would keep the memory
    m_SelectedApart = std::vector<Apart>();
}

/** What ended before the history is kept does not belong to it any more, whether it is gone yet or not. */
bool ConnectionSelection::readSince(const ConnectionQuery& query, std::uint64_t& since) {
    const StepResult result = m_KeptSince.Step();
    const std::int64_t keptSince = m_KeptSince.GetColumnAsInt64(0);
    m_KeptSince.Reset();
    if (result == StepResult::Failed) {
        return fail(m_Database.GetLastError());
    }
    const std::int64_t from = toColumn(query.from);
    since = toNumber(result == StepResult::Row ? std::max(from, keptSince) : from);
    return true;
}

/** The blocks in which something may have lived in that time, with all that they hold. */
bool ConnectionSelection::selectBlocks(const ConnectionQuery& query, std::uint64_t since) {
    const std::int64_t from = fromNumber(since);
    const std::int64_t to = toColumn(query.to);
    StepResult result = m_Heads.Step();
    for (; result == StepResult::Row && !m_Stop.stop_requested(); result = m_Heads.Step()) {
        if (m_Heads.GetColumnAsInt64(2) <= to && m_Heads.GetColumnAsInt64(5) >= from) {
            const bool isAllInTime = m_Heads.GetColumnAsInt64(3) <= to && m_Heads.GetColumnAsInt64(4) >= from;
            m_SelectedBlocks.push_back({.number = m_Heads.GetColumnAsInt(0),
                                        .isAllInTime = isAllInTime,
                                        .slots = Slots::fromBytes(m_Heads.GetColumnBytes(1))});
            limitIds(m_SelectedBlocks.back(), query.newest);
        }
    }
    m_Heads.Reset();
    return result != StepResult::Failed || fail(m_Database.GetLastError());
}

void ConnectionSelection::limitIds(Block& block, std::optional<ConnectionId> newest) {
    if (newest && ConnectionBlock::idAt(block.number, Slots::count - 1) > *newest) {
        block.slots.keepIf([&](int slot) { return ConnectionBlock::idAt(block.number, slot) <= *newest; });
    }
}

bool ConnectionSelection::selectApart(const ConnectionQuery& query, std::uint64_t since) {
    using enum ConnectionNumber;
    const std::uint64_t until = toNumber(toColumn(query.to));
    StepResult result = m_Apart.Step();
    for (; result == StepResult::Row; result = m_Apart.Step()) {
        Apart apart{.id = m_Apart.GetColumnAsInt(0), .numbers = connectionNumbers(m_Apart)};
        const auto number = [&apart](ConnectionNumber which) -> std::uint64_t& {
            return apart.numbers[static_cast<std::size_t>(which)];
        };
        if (m_Apart.GetColumnAsInt(lifeColumnIndex) == openLife) {
            number(Ended) = toNumber(std::numeric_limits<std::int64_t>::max());
        }
        removeFromBlock(apart.id);
        const bool passes = number(Started) <= until && number(Ended) >= since &&
                            (!query.newest || apart.id <= *query.newest) &&
                            (!query.application || number(Application) == toNumber(*query.application)) &&
                            (!query.socketProtocol || number(Protocol) == toNumber(*query.socketProtocol));
        if (passes) {
            m_SelectedApart.push_back(apart);
        }
    }
    m_Apart.Reset();
    return result == StepResult::Done || fail(m_Database.GetLastError());
}

/** A connection that was written anew after it had been closed counts as its row says. */
void ConnectionSelection::removeFromBlock(ConnectionId id) {
    const std::int32_t number = ConnectionBlock::blockOf(id);
    const auto block = std::ranges::lower_bound(m_SelectedBlocks, number, {}, &Block::number);
    if (block != m_SelectedBlocks.end() && block->number == number) {
        block->slots.remove(ConnectionBlock::slotOf(id));
    }
}

bool ConnectionSelection::checkTimes(std::uint64_t since, std::uint64_t until) {
    for (Block& block : m_SelectedBlocks) {
        if (block.isAllInTime || block.slots.isEmpty()) {
            continue;
        }
        const PackedColumn* times = read(columnOf(ConnectionNumber::Started), block);
        if (times == nullptr) {
            return false;
        }
        block.slots.keepIf(
            [&](int slot) { return times->numbers[0][slot] <= until && times->numbers[1][slot] >= since; });
    }
    return true;
}

bool ConnectionSelection::checkKinds(const ConnectionQuery& query) {
    if (!query.application && !query.socketProtocol) {
        return true;
    }
    for (Block& block : m_SelectedBlocks) {
        if (block.slots.isEmpty()) {
            continue;
        }
        const PackedColumn* kinds = read(columnOf(ConnectionNumber::Application), block);
        if (kinds == nullptr) {
            return false;
        }
        block.slots.keepIf([&](int slot) {
            return (!query.application || kinds->numbers[0][slot] == toNumber(*query.application)) &&
                   (!query.socketProtocol || kinds->numbers[1][slot] == toNumber(*query.socketProtocol));
        });
    }
    return true;
}

std::size_t ConnectionSelection::count() const {
    std::size_t count = m_SelectedApart.size();
    for (const Block& block : m_SelectedBlocks) {
        count += static_cast<std::size_t>(block.slots.size());
    }
    return count;
}

/** Null when it was stopped or cannot be read. */
const PackedColumn* ConnectionSelection::read(std::size_t column, const Block& block) {
    if (m_Stop.stop_requested()) {
        return nullptr;
    }
    const PackedColumn* numbers = m_Readers[column].find(block.number);
    if (numbers == nullptr) {
        fail("block " + std::to_string(block.number) + " cannot be read");
    }
    return numbers;
}

bool ConnectionSelection::fail(const std::string& reason) {
    m_LastError = reason;
    return false;
}

}  // namespace service
