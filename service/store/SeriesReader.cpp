// SPDX-License-Identifier: GPL-3.0-or-later
#include "service/store/SeriesReader.h"

#include "service/store/Columns.h"

namespace service {

SeriesReader::SeriesReader(SQLite::Database& database)
    : m_LastRow(database,
                "SELECT received, sent FROM series WHERE application = ?1 AND class = ?2 "
                "AND moment <= max(?3, (SELECT kept_since FROM counting)) ORDER BY moment DESC LIMIT 1") {}

std::optional<ByteCount> SeriesReader::upTo(ApplicationId application, ProtocolClass protocolClass,
                                            Moment moment) {
    std::optional<ByteCount> bytes;
    m_LastRow.BindAll(application, static_cast<int>(protocolClass), toColumn(moment));
    const SQLite::StepResult result = m_LastRow.Step();
    if (result == SQLite::StepResult::Row) {
        bytes = {.received = m_LastRow.GetColumnAsInt64(0), .sent = m_LastRow.GetColumnAsInt64(1)};
    } else if (result == SQLite::StepResult::Done) {
        bytes = ByteCount{};
    }
    m_LastRow.Reset();
    return bytes;
}

std::optional<Counters> SeriesReader::upTo(ApplicationId application, Moment moment) {
    Counters counters;
    for (std::size_t i = 0; i < protocolClassCount; ++i) {
        const std::optional<ByteCount> bytes = upTo(application, static_cast<ProtocolClass>(i), moment);
        if (!bytes) {
            return std::nullopt;
        }
        counters.byClass[i] = *bytes;
    }
    return counters;
}

}  // namespace service
