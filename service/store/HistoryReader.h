// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <stop_token>
#include <string>
#include <vector>

#include "libs/sqlite/Database.h"
#include "libs/sqlite/Query.h"
#include "protocol/DaemonConnectionInfo.h"
#include "service/ledger/Records.h"
#include "service/store/connections/ConnectionLister.h"
#include "service/store/connections/ConnectionQuery.h"
#include "service/store/series/SeriesReader.h"
#include "service/traffic/Moment.h"

namespace service {

/**
 * Answers questions about the past from the database, through a connection of its own: readers never wait for
 * the writer. For one thread. What cannot be read counts as not there, with a line in the log.
 */
class HistoryReader {
  public:
    /** Opens the database at `path`, which a `Store` has made. Null with the reason in `error`. */
    static std::unique_ptr<HistoryReader> open(const std::string& path, std::string& error);

    HistoryReader(const HistoryReader&) = delete;
    HistoryReader& operator=(const HistoryReader&) = delete;

    /**
     * Cumulative bytes of one application (or of all, without an id) in one protocol class (or in all) up to
     * and including `moment`, as `SeriesReader::upTo` tells; one index seek per class.
     */
    ByteCount totalUpTo(std::optional<ApplicationId> application, std::optional<ProtocolClass> protocolClass,
                        Moment moment);

    /** Told how many connections a list has, before memory is taken for their ids. */
    using OnCounted = std::function<void(std::size_t count)>;

    /**
     * Ids of the connections that pass the query's filter, in its order; equal ones in the order of their ids.
     * None that ended before the history is kept. Takes as long as `ConnectionLister` needs: seconds for millions.
     * None either when `stop` asks for an end before.
     */
    std::vector<ConnectionId> connections(
        const ConnectionQuery& query, const std::stop_token& stop = {},
        const OnCounted& onCounted = [](std::size_t) {});

    /** Fills a wire record, with its times in local calendar time, from the row of that id; false when there
     * is none. */
    bool connection(ConnectionId id, DaemonConnectionInfo& info);

  private:
    explicit HistoryReader(std::unique_ptr<SQLite::Database> database);

    std::unique_ptr<SQLite::Database> m_Database;
    SeriesReader m_Series;
    SQLite::Query m_Connection;
    ConnectionLister m_Lister;
};

}  // namespace service
