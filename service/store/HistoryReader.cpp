// SPDX-License-Identifier: GPL-3.0-or-later
#include "service/store/HistoryReader.h"

#include <utility>

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

/** The columns in the order of `DaemonConnectionInfo::UpdateFromQuery`. */
constexpr char selectConnection[] =
    "SELECT id, application, datetime(started, 'unixepoch', 'localtime'), "
    "datetime(ended, 'unixepoch', 'localtime'), direction, domain, type, protocol, received, sent, "
    "address_family(remote), address_text(remote), address_port(remote), "
    "address_family(local), address_text(local), address_port(local) "
    "FROM connections WHERE id = ?1";

/** Directions are numbered in the alphabetical order of their names, addresses compare as numbers. */
const char* columnOf(ConnectionSortField field) {
    switch (field) {
        case ConnectionSortField::StartTime:
            return "started";
        case ConnectionSortField::EndTime:
            return "ended";
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

std::string orderOf(const ConnectionQuery& query) {
    const char* column = columnOf(query.sortField);
    if (column == nullptr) {
        return "id";
    }
    switch (query.sortDirection) {
        case SortDirection::Ascending:
            return std::string(column) + ", id";
        case SortDirection::Descending:
            return std::string(column) + " DESC, id";
        case SortDirection::None:
            break;
    }
    return "id";
}

/** Only the conditions that are asked for, so that the index that serves them best is used. */
std::string selectIds(const ConnectionQuery& query) {
    std::string sql = "SELECT id FROM connections WHERE ended >= ?1 AND started <= ?2";
    if (query.application) {
        sql += " AND application = ?3";
    }
    if (query.socketProtocol) {
        sql += " AND protocol = ?4";
    }
    return sql + " ORDER BY " + orderOf(query);
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
    const ApplicationId id = application.value_or(allApplications);
    return protocolClass ? m_Series.upTo(id, *protocolClass, moment) : m_Series.upTo(id, moment).total();
}

std::vector<ConnectionId> HistoryReader::connections(const ConnectionQuery& query) {
    SQLite::Query rows(*m_Database, selectIds(query));
    rows.Bind(1, toColumn(query.from));
    rows.Bind(2, toColumn(query.to));
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
    return ids;
}

bool HistoryReader::connection(ConnectionId id, DaemonConnectionInfo& info) {
    const bool found = m_Connection.BindAll(id) && m_Connection.Step() == SQLite::StepResult::Row &&
                       info.UpdateFromQuery(&m_Connection);
    m_Connection.Reset();
    return found;
}

}  // namespace service
