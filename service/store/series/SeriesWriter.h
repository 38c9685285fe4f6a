// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "libs/sqlite/Database.h"
#include "libs/sqlite/Query.h"
#include "service/ledger/Records.h"
#include "service/store/series/SeriesGrain.h"
#include "service/traffic/Counters.h"
#include "service/traffic/Moment.h"

namespace service {

/** Writes rows of the series, within a transaction that the caller has begun. For the thread of its database. */
class SeriesWriter {
  public:
    explicit SeriesWriter(SQLite::Database& database);

    bool isValid() const { return m_Write.IsValid(); }

    /** A row for each class in which `counters` differ from what was `written`, which they replace. */
    bool write(ApplicationId application, const Counters& counters, Moment moment, Counters& written);

    /**
     * What the series say of moments after `present` they say of `present`: no byte is lost, and no total sinks. Where
     * `grains` says that they are coarse there, that goes for the whole interval, which has no end yet.
     */
    bool redate(Moment present, SeriesGrains& grains);

  private:
    SQLite::Database& m_Database;
    SQLite::Query m_Write;
};

}  // namespace service
