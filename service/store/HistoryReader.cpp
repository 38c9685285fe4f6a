// SPDX-License-Identifier: GPL-3.0-or-later
#include "service/store/HistoryReader.h"

#include <algorithm>
#include <utility>

#include "libs/sqlite/Snapshot.h"
#include "libs/utils/src/StringUtils.h"
#include "service/log/Log.h"
#include "service/store/columns/Columns.h"
#include "service/store/file/DamagedDatabase.h"

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
    if (!reader->m_Series.isValid() || !reader->m_Connection.IsValid() || !reader->m_Lister.isValid()) {
        return failed(*reader->m_Database);
    }
    return reader;
}

HistoryReader::HistoryReader(std::unique_ptr<SQLite::Database> database)
    : m_Database(std::move(database)),
      m_Series(*m_Database),
      m_Connection(*m_Database, selectConnection),
      m_Lister(*m_Database) {}

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
        logPeerLine("store: cannot read a total: ", m_Database->GetLastError());
        if (m_Database->IsDamaged()) {
            DamagedDatabase(m_Database->GetPath(), true).note();
        }
    }
    return bytes.value_or(ByteCount{});
}

std::vector<ConnectionId> HistoryReader::connections(const ConnectionQuery& query,
                                                     const std::stop_token& stop,
                                                     const OnCounted& onCounted) {
    std::vector<ConnectionId> ids;
    if (!m_Lister.list(query, ids, stop, onCounted)) {
        ids = std::vector<ConnectionId>();
        if (!stop.stop_requested()) {
            logLine("store: cannot list connections: ", m_Lister.lastError());
        }
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
