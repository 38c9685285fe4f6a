// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <array>
#include <cstddef>
#include <optional>

#include "libs/sqlite/Database.h"
#include "libs/sqlite/Query.h"
#include "service/ledger/Records.h"
#include "service/store/series/SeriesGrain.h"
#include "service/store/series/SeriesReader.h"
#include "service/traffic/Moment.h"

namespace service {

/**
 * Makes the series coarser as they age, window by window: first readers are told that a window is coarse, then the rows
 * within its intervals go, application by application. What the last row of an interval tells holds until its end, so
 * no total at such a moment changes. For the thread of its database.
 */
class Thinner {
  public:
    explicit Thinner(SQLite::Database& database);

    bool isValid() const;

    /** Whether anything may have to be done at `present`. Cheap. */
    bool isDue(Moment present) const;

    /**
     * A part of it, of some 20 ms, which may move `grains` on; nothing before `keptSince` is looked at. Within a
     * transaction that the caller has begun; when it is not committed, or this is false, `restart` has to follow.
     */
    bool step(Moment present, Moment keptSince, SeriesGrains& grains);

    /**
     * Begins again, with the last window of each grain: it may be half done. After what it knows of the rows has become
     * void, and at first.
     */
    void restart();

  private:
    struct Window {
        std::size_t level;
        Moment from;  ///< not in the window itself
        Moment to;
        ApplicationId application = allApplications;  ///< those before it are done
    };

    bool openWindow(Moment present, Moment keptSince, SeriesGrains& grains);
    bool dropRows();

    SQLite::Query m_FindFirst;
    SQLite::Query m_FindApplication;
    SQLite::Query m_DropRows;
    SQLite::Query m_WriteGrains;

    std::optional<Window> m_Window;
    std::array<Moment, seriesGrains.size()> m_Done{};     ///< nothing to be done before
    std::array<bool, seriesGrains.size()> m_Revisited{};  ///< whether the last window is known to be done
};

}  // namespace service
