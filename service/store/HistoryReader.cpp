// SPDX-License-Identifier: GPL-3.0-or-later
#include "service/store/HistoryReader.h"

#include <algorithm>
#include <utility>

#include "libs/sqlite/Snapshot.h"
#include "libs/utils/src/StringUtils.h"
#include "service/log/Log.h"
#include "service/store/Columns.h"

namespace service {

namespace {

// An address's parts for the row reader, out of its blob.

SQLite::Database::Value addressFamily(std::span<const std::uint8_t> blob) {
    return std::int64_t{addressFromColumn(blob).family};
}

SQLite::Database::Value addressText(std::span<const std::uint8_t> blob) {
    return ipToString(addressFromColumn(blob));
}

SQLite::Database::Value addressPort(std::span<const std::uint8_t> blob) {
    return std::int64_t{addressFromColumn(blob).port};
}

/**
 * The columns in the order of `DaemonConnectionInfo::UpdateFromQuery`. An open connection (?2 is the life of
 * those) is known to have lasted until the last moment that was written.
 */
constexpr char selectConnection[] =
    "SELECT id, application, datetime(started, 'unixepoch', 'localtime'), "
    "datetime(iif(life = ?2, (SELECT latest FROM counting), ended), 'unixepoch', 'localtime'), "
    "direction, domain, type, protocol, received, sent, "
    "address_family(remote), address_text(remote), address_port(remote), "
    "address_family(local), address_text(local), address_port(local) "
    "FROM connections WHERE id = ?1";

/** Directions are numbered in the alphabetical order of their names, addresses compare as numbers. */
const char* columnOf(ConnectionSortField field) {
    switch (field) {
        case ConnectionSortField::StartTime:
            return "started";
        case ConnectionSortField::EndTime:
            return "iif(life = ?5, 9223372036854775807, ended)";  // an open one ends after all others
        case ConnectionSortField::Direction:
            return "direction";
        case ConnectionSortField::ReceivedBytes:
            return "received";
        case ConnectionSortField::SentBytes:
            return "sent";
        case ConnectionSortField::LocalAddress:
            return "local";
        case ConnectionSortField::RemoteAddress:
            return "remote";
        case ConnectionSortField::None:
            break;
    }
    return nullptr;
}

/** Whether the rows come in an order of their own, or simply by id. */
bool isSorted(const ConnectionQuery& query) {
    return columnOf(query.sortField) != nullptr && (query.sortDirection == SortDirection::Ascending ||
                                                    query.sortDirection == SortDirection::Descending);
}

/** Why it goes life by life, of which the last (?5) is that of open ones, is told in `Migrations.cpp`. */
std::string selectIds(const ConnectionQuery& query) {
    std::string sql =
        "WITH RECURSIVE lives (life) AS (VALUES (0) UNION ALL SELECT life + 1 FROM lives WHERE life < ?5), "
        "asked (since) AS (SELECT max(?1, kept_since) FROM counting) "
        "SELECT id FROM asked CROSS JOIN lives CROSS JOIN connections USING (life) "
        "WHERE started BETWEEN since - (1 << life) AND ?2 AND (ended >= since OR life = ?5)";
    if (query.application) {
        sql += " AND application = ?3";
    }
    if (query.socketProtocol) {
        sql += " AND protocol = ?4";
    }
    if (isSorted(query)) {
        const bool descending = query.sortDirection == SortDirection::Descending;
        sql += std::string(" ORDER BY ") + columnOf(query.sortField) + (descending ? " DESC, id" : ", id");
    }
    return sql;
}

}  // namespace

std::unique_ptr<HistoryReader> HistoryReader::open(const std::string& path, std::string& error) {
    const auto failed = [&](const SQLite::Database& database) {
        error = "cannot read database " + path + ": " + database.GetLastError();
        return nullptr;
    };
    auto database = std::make_unique<SQLite::Database>();
    if (!database->Open(path, SQLite::OpenMode::ReadOnly) ||
        !database->AddFunction("address_family", addressFamily) ||
        !database->AddFunction("address_text", addressText) ||
        !database->AddFunction("address_port", addressPort)) {
        return failed(*database);
    }
    std::unique_ptr<HistoryReader> reader(new HistoryReader(std::move(database)));
    if (!reader->m_Series.isValid() || !reader->m_Connection.IsValid()) {
        return failed(*reader->m_Database);
    }
    return reader;
}

HistoryReader::HistoryReader(std::unique_ptr<SQLite::Database> database)
    : m_Database(std::move(database)), m_Series(*m_Database), m_Connection(*m_Database, selectConnection) {}

ByteCount HistoryReader::totalUpTo(std::optional<ApplicationId> application,
                                   std::optional<ProtocolClass> protocolClass, Moment moment) {
    const SQLite::Snapshot snapshot(*m_Database);  // classes are read one by one; a wipe may come between
    const ApplicationId id = application.value_or(allApplications);
    std::optional<ByteCount> bytes;
    if (protocolClass) {
        bytes = m_Series.upTo(id, *protocolClass, moment);
    } else if (const std::optional<Counters> counters = m_Series.upTo(id, moment)) {
        bytes = counters->total();
    }
    if (!bytes) {
        logLine("store: cannot read a total: ", m_Database->GetLastError());
    }
    return bytes.value_or(ByteCount{});
}

std::vector<ConnectionId> HistoryReader::connections(const ConnectionQuery& query) {
    SQLite::Query rows(*m_Database, selectIds(query));
    rows.Bind(1, toColumn(query.from));
    rows.Bind(2, toColumn(query.to));
    rows.Bind(5, openLife);
    if (query.application) {
        rows.Bind(3, *query.application);
    }
    if (query.socketProtocol) {
        rows.Bind(4, *query.socketProtocol);
    }
    std::vector<ConnectionId> ids;
    SQLite::StepResult result = rows.Step();
    for (; result == SQLite::StepResult::Row; result = rows.Step()) {
        ids.push_back(rows.GetColumnAsInt(0));
    }
    if (result == SQLite::StepResult::Failed) {
        logLine("store: cannot list connections: ", rows.GetLastError());
    }
    if (!isSorted(query)) {
        std::ranges::sort(ids);
    }
    return ids;
}

bool HistoryReader::connection(ConnectionId id, DaemonConnectionInfo& info) {
    m_Connection.BindAll(id, openLife);
    const SQLite::StepResult result = m_Connection.Step();
    const bool found = result == SQLite::StepResult::Row && info.UpdateFromQuery(&m_Connection);
    if (result == SQLite::StepResult::Failed) {
        logLine("store: cannot read connection ", id, ": ", m_Connection.GetLastError());
    }
    m_Connection.Reset();
    return found;
}

}  // namespace service
