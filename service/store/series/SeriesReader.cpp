// SPDX-License-Identifier: GPL-3.0-or-later
#include "service/store/series/SeriesReader.h"

#include <cstddef>
#include <cstdint>
#include <string>

#include "service/store/columns/Columns.h"
#include "service/store/series/SeriesGrain.h"

namespace service {

namespace {

/** The length of the interval that the moment `at` is in: `SeriesGrains::lengthAt` in SQL. */
std::string intervalLength() {
    const auto of = [](std::size_t level) { return std::to_string(seriesGrains[level].length.count()); };
    return "CASE WHEN at <= thinned_hours THEN " + of(2) + " WHEN at <= thinned_minutes THEN " + of(1) +
           " WHEN at <= thinned_tens THEN " + of(0) + " ELSE 1 END";
}

/** The rows up to the end of the interval in which ?3 is, the last one first. One statement: grains and rows go together. */
std::string selectRows() {
    return "WITH asked AS (SELECT max(?3, kept_since) AS at, * FROM counting WHERE only_row = 1), "
           "grained AS (SELECT at, kept_since, " +
           intervalLength() +
           " AS length FROM asked), "
           "intervals AS (SELECT at, max((at - 1) / length * length, kept_since) AS since, "
           "(at - 1) / length * length + length AS until FROM grained) "
           "SELECT at, since, until, moment, received, sent, payload_received, payload_sent "
           "FROM intervals CROSS JOIN series WHERE application = ?1 AND class = ?2 AND moment <= until "
           "ORDER BY moment DESC";
}

/** What grew evenly from `first` to `last` within `whole`, after `part` of it. */
std::int64_t grown(std::int64_t first, std::int64_t last, std::int64_t part, std::int64_t whole) {
    const std::int64_t growth = last - first;
    return first + growth / whole * part + growth % whole * part / whole;  // a product of all could overflow
}

ByteCount grown(const ByteCount& first, const ByteCount& last, std::int64_t part, std::int64_t whole) {
    return {.received = grown(first.received, last.received, part, whole),
            .sent = grown(first.sent, last.sent, part, whole)};
}

}  // namespace

SeriesReader::SeriesReader(SQLite::Database& database) : m_Rows(database, selectRows()) {}

std::optional<SeriesReader::Total> SeriesReader::total(ApplicationId application, ProtocolClass protocolClass,
                                                       Moment moment) {
    m_Rows.BindAll(application, static_cast<int>(protocolClass), toColumn(moment));
    std::optional<Total> result;
    SQLite::StepResult step = m_Rows.Step();
    if (step == SQLite::StepResult::Row) {
        result = interpolate(step);
    } else {
        result.emplace();
    }
    m_Rows.Reset();
    return step != SQLite::StepResult::Failed ? result : std::nullopt;
}

/** Stands on the interval's last row, or on one before it when nothing moved in it. */
SeriesReader::Total SeriesReader::interpolate(SQLite::StepResult& step) {
    const std::int64_t at = m_Rows.GetColumnAsInt64(0);
    const std::int64_t begin = m_Rows.GetColumnAsInt64(1);
    const std::int64_t end = m_Rows.GetColumnAsInt64(2);
    const Total last = row();
    if (at == end) {
        return last;
    }
    while (step == SQLite::StepResult::Row && m_Rows.GetColumnAsInt64(3) > begin) {
        step = m_Rows.Step();
    }
    const Total first = step == SQLite::StepResult::Row ? row() : Total();
    return {.moved = grown(first.moved, last.moved, at - begin, end - begin),
            .payload = grown(first.payload, last.payload, at - begin, end - begin)};
}

SeriesReader::Total SeriesReader::row() const {
    const auto bytes = [this](int column) {
        return ByteCount{m_Rows.GetColumnAsInt64(column), m_Rows.GetColumnAsInt64(column + 1)};
    };
    return {.moved = bytes(4), .payload = bytes(6)};
}

std::optional<ByteCount> SeriesReader::upTo(ApplicationId application, ProtocolClass protocolClass,
                                            Moment moment) {
    const std::optional<Total> found = total(application, protocolClass, moment);
    return found ? std::optional(found->moved) : std::nullopt;
}

std::optional<Counters> SeriesReader::upTo(ApplicationId application, Moment moment) {
    Counters counters;
    for (std::size_t i = 0; i < protocolClassCount; ++i) {
        const auto protocolClass = static_cast<ProtocolClass>(i);
        const std::optional<Total> found = total(application, protocolClass, moment);
        if (!found) {
            return std::nullopt;
        }
        counters.add(protocolClass, found->moved, found->payload);
    }
    return counters;
}

}  // namespace service
