// SPDX-License-Identifier: GPL-3.0-or-later
#include "service/store/connections/BlockReader.h"

#include <limits>
#include <string>

namespace service {

namespace {

/** Blocks that it is cheaper to step over than to seek beyond. */
constexpr int nearby = 4;

std::string selectColumn(std::size_t column) {
    return std::string("SELECT block, numbers FROM ") + connectionColumns[column].table +
           " WHERE block >= ?1 ORDER BY block";
}

}  // namespace

BlockReader::BlockReader(SQLite::Database& database, std::size_t column)
    : m_Column(column), m_Rows(database, selectColumn(column)) {}

const PackedColumn* BlockReader::find(std::int32_t block) {
    if (m_At < 0 || m_At > block || block - m_At > nearby) {
        m_Rows.BindAll(block);
        step();
    }
    while (m_At < block && step()) {
    }
    return m_At == block && m_Numbers.read(m_Column, m_Rows.GetColumnBytes(1)) ? &m_Numbers : nullptr;
}

bool BlockReader::step() {
    const bool isThere = m_Rows.Step() == SQLite::StepResult::Row;
    m_At = isThere ? m_Rows.GetColumnAsInt64(0) : std::numeric_limits<std::int64_t>::max();
    return isThere;
}

void BlockReader::reset() {
    m_Rows.Reset();
    m_At = -1;
}

}  // namespace service
