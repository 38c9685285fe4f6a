// SPDX-License-Identifier: GPL-3.0-or-later
#include "service/store/series/SeriesWriter.h"

#include <chrono>
#include <cstddef>
#include <cstdint>

#include "service/store/columns/Columns.h"

namespace service {

SeriesWriter::SeriesWriter(SQLite::Database& database)
    : m_Database(database),
      m_Write(database,
              "INSERT OR REPLACE INTO series (application, class, moment, received, sent, "
              "payload_received, payload_sent) VALUES (?1, ?2, ?3, ?4, ?5, ?6, ?7)") {}

bool SeriesWriter::write(ApplicationId application, const Counters& counters, Moment moment,
                         Counters& written) {
    for (std::size_t i = 0; i < protocolClassCount; ++i) {
        const ByteCount& bytes = counters.byClass[i];
        const ByteCount& payload = counters.payloadByClass[i];
        const bool changed = bytes != written.byClass[i] || payload != written.payloadByClass[i];
        if (changed && !m_Write.Execute(application, static_cast<std::int64_t>(i), toColumn(moment),
                                        bytes.received, bytes.sent, payload.received, payload.sent)) {
            return false;
        }
    }
    written = counters;
    return true;
}

bool SeriesWriter::redate(Moment present, SeriesGrains& grains) {
    const auto length = grains.lengthAt(present);
    const Moment last = intervalEnd(present + std::chrono::seconds(1), length) - length;
    grains.endAt(last);
    // All counts only grow with time, so the greatest ones are the last row's.
    SQLite::Query gather(
        m_Database,
        "INSERT OR REPLACE INTO series (application, class, moment, received, sent, "
        "payload_received, payload_sent) SELECT application, class, ?1, max(received), max(sent), "
        "max(payload_received), max(payload_sent) FROM series "
        "WHERE moment > ?2 GROUP BY application, class");
    SQLite::Query erase(m_Database, "DELETE FROM series WHERE moment > ?2 AND moment <> ?1");
    return gather.Execute(toColumn(present), toColumn(last)) &&
           erase.Execute(toColumn(present), toColumn(last));
}

}  // namespace service
