// SPDX-License-Identifier: GPL-3.0-or-later
#include "service/store/SeriesReader.h"

#include "service/store/Columns.h"

namespace service {

SeriesReader::SeriesReader(SQLite::Database& database)
    : m_LastRow(database,
                "SELECT received, sent, payload_received, payload_sent FROM series "
                "WHERE application = ?1 AND class = ?2 "
                "AND moment <= max(?3, (SELECT kept_since FROM counting)) ORDER BY moment DESC LIMIT 1") {}

std::optional<SeriesReader::Row> SeriesReader::lastRow(ApplicationId application, ProtocolClass protocolClass,
                                                       Moment moment) {
    m_LastRow.BindAll(application, static_cast<int>(protocolClass), toColumn(moment));
    std::optional<Row> row;
    const SQLite::StepResult result = m_LastRow.Step();
    if (result == SQLite::StepResult::Row) {
        const auto bytes = [&](int column) {
            return ByteCount{m_LastRow.GetColumnAsInt64(column), m_LastRow.GetColumnAsInt64(column + 1)};
        };
        row = {.moved = bytes(0), .payload = bytes(2)};
    } else if (result == SQLite::StepResult::Done) {
        row.emplace();
    }
    m_LastRow.Reset();
    return row;
}

std::optional<ByteCount> SeriesReader::upTo(ApplicationId application, ProtocolClass protocolClass,
                                            Moment moment) {
    const std::optional<Row> row = lastRow(application, protocolClass, moment);
    return row ? std::optional(row->moved) : std::nullopt;
}

std::optional<Counters> SeriesReader::upTo(ApplicationId application, Moment moment) {
    Counters counters;
    for (std::size_t i = 0; i < protocolClassCount; ++i) {
        const auto protocolClass = static_cast<ProtocolClass>(i);
        const std::optional<Row> row = lastRow(application, protocolClass, moment);
        if (!row) {
            return std::nullopt;
        }
        counters.add(protocolClass, row->moved, row->payload);
    }
    return counters;
}

}  // namespace service
