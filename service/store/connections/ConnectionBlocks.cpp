// SPDX-License-Identifier: GPL-3.0-or-later
#include "service/store/connections/ConnectionBlocks.h"

#include <algorithm>
#include <string>

#include "service/store/columns/Columns.h"

namespace service {

namespace {

using SQLite::StepResult;

// The first condition of each is what the index over such rows is limited to, see `Migrations.cpp`.
constexpr char countClosed[] = "SELECT count(*) FROM connections WHERE life >= 33 AND life = 34";
constexpr char markTakenIn[] = "UPDATE connections SET life = 0 WHERE life >= 33 AND life = 34";

std::string selectNumbers(const std::string& condition) {
    return std::string("SELECT ") + connectionNumberColumns + " FROM connections WHERE " + condition +
           " ORDER BY id";
}

std::string ofTable(const char* begin, const char* table, const char* end) {
    return std::string(begin) + " " + table + " " + end;
}

}  // namespace

ConnectionBlocks::Column::Column(SQLite::Database& database, const char* table)
    : read(database, ofTable("SELECT numbers FROM", table, "WHERE block = ?1")),
      write(database, ofTable("INSERT OR REPLACE INTO", table, "(block, numbers) VALUES (?1, ?2)")),
      erase(database, ofTable("DELETE FROM", table, "WHERE block = ?1")) {}

ConnectionBlocks::ConnectionBlocks(SQLite::Database& database)
    : m_CountClosed(database, countClosed),
      m_SelectClosed(database, selectNumbers("life >= 33 AND life = 34")),
      m_MarkTakenIn(database, markTakenIn),
      m_FindOld(database,
                "SELECT block FROM connection_blocks WHERE block >= ?1 AND first_ended < ?2 "
                "AND first_started < ?2 ORDER BY block LIMIT 1"),
      m_DropRow(database, "DELETE FROM connections WHERE id = ?1 AND life < 33"),
      m_ReadSlots(database, "SELECT slots FROM connection_blocks WHERE block = ?1"),
      m_WriteHead(database,
                  "INSERT OR REPLACE INTO connection_blocks "
                  "(block, slots, first_started, last_started, first_ended, last_ended) "
                  "VALUES (?1, ?2, ?3, ?4, ?5, ?6)"),
      m_EraseHead(database, "DELETE FROM connection_blocks WHERE block = ?1"),
      m_Columns{{{database, connectionColumns[0].table},
                 {database, connectionColumns[1].table},
                 {database, connectionColumns[2].table},
                 {database, connectionColumns[3].table},
                 {database, connectionColumns[4].table},
                 {database, connectionColumns[5].table}}} {}

bool ConnectionBlocks::isValid() const {
    return m_CountClosed.IsValid() && m_SelectClosed.IsValid() && m_MarkTakenIn.IsValid() &&
           m_FindOld.IsValid() && m_DropRow.IsValid() && m_ReadSlots.IsValid() && m_WriteHead.IsValid() &&
           m_EraseHead.IsValid() && std::ranges::all_of(m_Columns, [](const Column& column) {
               return column.read.IsValid() && column.write.IsValid() && column.erase.IsValid();
           });
}

bool ConnectionBlocks::takeInClosed(std::int64_t enough) {
    m_CountClosed.Reset();
    if (m_CountClosed.Step() != StepResult::Row) {
        return false;
    }
    const std::int64_t count = m_CountClosed.GetColumnAsInt64(0);
    m_CountClosed.Reset();
    return count < enough || (takeIn(m_SelectClosed) && m_MarkTakenIn.Execute());
}

bool ConnectionBlocks::takeInAll(SQLite::Database& database) {
    SQLite::Query rows(database, selectNumbers("life < 33"));
    return ConnectionBlocks(database).takeIn(rows);
}

/** All the rows of a query over `connectionNumberColumns` in the order of ids. */
bool ConnectionBlocks::takeIn(SQLite::Query& rows) {
    std::optional<std::int32_t> current;
    ConnectionBlock block;
    rows.Reset();
    bool worked = true;
    StepResult result = rows.Step();
    for (; worked && result == StepResult::Row; result = rows.Step()) {
        const ConnectionId id = rows.GetColumnAsInt(0);
        const std::int32_t next = ConnectionBlock::blockOf(id);
        if (next != current) {
            worked = (!current || write(*current, block)) && read(next, block);
            current = next;
        }
        block.put(ConnectionBlock::slotOf(id), connectionNumbers(rows));
    }
    rows.Reset();
    return worked && result == StepResult::Done && (!current || write(*current, block));
}

/** One that is not there is an empty one. */
bool ConnectionBlocks::read(std::int32_t number, ConnectionBlock& block) {
    m_ReadSlots.BindAll(number);
    const StepResult result = m_ReadSlots.Step();
    block.setSlots(result == StepResult::Row ? Slots::fromBytes(m_ReadSlots.GetColumnBytes(0)) : Slots());
    m_ReadSlots.Reset();
    if (result != StepResult::Row) {
        return result == StepResult::Done;
    }
    for (std::size_t i = 0; i < m_Columns.size(); ++i) {
        SQLite::Query& column = m_Columns[i].read;
        column.BindAll(number);
        const bool isThere = column.Step() == StepResult::Row && block.unpack(i, column.GetColumnBytes(0));
        column.Reset();
        if (!isThere) {
            return false;
        }
    }
    return true;
}

bool ConnectionBlocks::write(std::int32_t number, const ConnectionBlock& block) {
    if (block.slots().isEmpty()) {
        return erase(number);
    }
    for (std::size_t i = 0; i < m_Columns.size(); ++i) {
        if (!m_Columns[i].write.Execute(number, block.pack(i))) {
            return false;
        }
    }
    using enum ConnectionNumber;
    return m_WriteHead.Execute(number, block.slots().toBytes(), fromNumber(block.smallest(Started)),
                               fromNumber(block.greatest(Started)), fromNumber(block.smallest(Ended)),
                               fromNumber(block.greatest(Ended)));
}

bool ConnectionBlocks::erase(std::int32_t number) {
    return m_EraseHead.Execute(number) &&
           std::ranges::all_of(m_Columns, [number](Column& column) { return column.erase.Execute(number); });
}

bool ConnectionBlocks::dropBefore(Moment moment, std::optional<std::int32_t>& first) {
    m_FindOld.BindAll(*first, toColumn(moment));
    const StepResult result = m_FindOld.Step();
    const std::int32_t found = m_FindOld.GetColumnAsInt(0);
    m_FindOld.Reset();
    if (result != StepResult::Row) {
        first.reset();
        return result == StepResult::Done;
    }
    *first = found + 1;
    return dropFrom(found, moment);
}

bool ConnectionBlocks::dropFrom(std::int32_t number, Moment moment) {
    ConnectionBlock block;
    if (!read(number, block)) {
        return false;
    }
    const std::uint64_t cut = toNumber(toColumn(moment));
    const auto isOld = [&](int slot) {
        return block.number(ConnectionNumber::Started, slot) < cut &&
               block.number(ConnectionNumber::Ended, slot) < cut;
    };
    bool worked = true;
    const Slots before = block.slots();
    before.forEach([&](int slot) {
        if (isOld(slot)) {
            block.remove(slot);
            worked = worked && m_DropRow.Execute(ConnectionBlock::idAt(number, slot));
        }
    });
    return worked && (block.slots() == before || write(number, block));
}

}  // namespace service
