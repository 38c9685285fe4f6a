// SPDX-License-Identifier: GPL-3.0-or-later
#include "service/store/ageing/Thinner.h"

#include <chrono>

#include "service/store/columns/Columns.h"

namespace service {

namespace {

using namespace std::chrono;

/** An append waits for the step that is under way. */
constexpr milliseconds stepTime{20};

/** The first moment after ?1 at which anything was counted, up to ?2. One seek for each class. */
constexpr char findFirst[] =
    "WITH classes (class) AS (VALUES (0), (1), (2)) SELECT min(first) FROM (SELECT (SELECT moment FROM "
    "series "
    "WHERE application = ?3 AND series.class = classes.class AND moment > ?1 AND moment <= ?2 "
    "ORDER BY moment LIMIT 1) AS first FROM classes)";

/** The rows of application ?1 after ?2 up to ?3 that another one follows in their interval, of length ?4. */
constexpr char dropRows[] =
    "DELETE FROM series WHERE application = ?1 AND class IN (0, 1, 2) AND moment > ?2 AND moment <= ?3 "
    "AND EXISTS (SELECT * FROM series AS later WHERE later.application = ?1 AND later.class = series.class "
    "AND later.moment > series.moment AND later.moment <= ((series.moment - 1) / ?4 + 1) * ?4)";

Moment windowBegin(Moment moment, seconds window) {
    return moment - moment.time_since_epoch() % window;
}

Moment target(std::size_t level, Moment present) {
    return windowBegin(present - seriesGrains[level].age, seriesGrains[level].window);
}

}  // namespace

Thinner::Thinner(SQLite::Database& database)
    : m_FindFirst(database, findFirst),
      m_FindApplication(database, "SELECT coalesce(min(id), 0) FROM applications WHERE id > ?1"),
      m_DropRows(database, service::dropRows),
      m_WriteGrains(database,
                    "UPDATE counting SET thinned_tens = ?1, thinned_minutes = ?2, thinned_hours = ?3") {}

bool Thinner::isValid() const {
    return m_FindFirst.IsValid() && m_FindApplication.IsValid() && m_DropRows.IsValid() &&
           m_WriteGrains.IsValid();
}

bool Thinner::isDue(Moment present) const {
    for (std::size_t level = 0; level < seriesGrains.size(); ++level) {
        if (m_Done[level] != target(level, present)) {
            return true;
        }
    }
    return m_Window.has_value();
}

void Thinner::restart() {
    m_Window.reset();
    m_Done = {};
    m_Revisited = {};
}

bool Thinner::step(Moment present, Moment keptSince, SeriesGrains& grains) {
    const auto end = steady_clock::now() + stepTime;
    bool worked = true;
    while (worked && isDue(present) && steady_clock::now() < end) {
        worked = m_Window ? dropRows() : openWindow(present, keptSince, grains);
    }
    return worked;
}

/** Finer grains go first, so that a window never has more rows than the grain before leaves. */
bool Thinner::openWindow(Moment present, Moment keptSince, SeriesGrains& grains) {
    std::size_t level = 0;
    while (m_Done[level] == target(level, present)) {
        ++level;
    }
    Moment& until = grains.until[level];
    const seconds length = seriesGrains[level].window;
    if (!m_Revisited[level]) {
        m_Revisited[level] = true;
        m_Window = {.level = level, .from = std::max(until - length, keptSince), .to = until};
        return true;
    }
    const Moment from = std::max(until, keptSince);
    if (!m_FindFirst.BindAll(toColumn(from), toColumn(target(level, present)), allApplications) ||
        m_FindFirst.Step() != SQLite::StepResult::Row) {
        m_FindFirst.Reset();
        return false;
    }
    const Moment first = momentFromColumn(m_FindFirst.GetColumnAsInt64(0));
    m_FindFirst.Reset();
    if (first == Moment()) {
        m_Done[level] = target(level, present);
        return true;
    }
    const Moment begin = windowBegin(first - seconds(1), length);
    m_Window = {.level = level, .from = std::max(begin, from), .to = begin + length};
    until = begin + length;
    return m_WriteGrains.Execute(toColumn(grains.until[0]), toColumn(grains.until[1]),
                                 toColumn(grains.until[2]));
}

bool Thinner::dropRows() {
    const Window& window = *m_Window;
    if (!m_DropRows.Execute(window.application, toColumn(window.from), toColumn(window.to),
                            seriesGrains[window.level].length.count()) ||
        !m_FindApplication.BindAll(window.application) ||
        m_FindApplication.Step() != SQLite::StepResult::Row) {
        m_FindApplication.Reset();
        return false;
    }
    m_Window->application = m_FindApplication.GetColumnAsInt(0);
    m_FindApplication.Reset();
    if (m_Window->application == allApplications) {
        m_Window.reset();
    }
    return true;
}

}  // namespace service
