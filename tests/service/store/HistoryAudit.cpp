// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/service/store/HistoryAudit.h"

#include <array>
#include <map>
#include <tuple>
#include <utility>

#include "libs/sqlite/Query.h"
#include "service/store/columns/Columns.h"
#include "service/store/series/SeriesGrain.h"
#include "service/store/series/SeriesReader.h"

namespace service {

namespace {

/** The totals of one moment, as the rows up to it tell, which come in the order of time. */
class Totals {
  public:
    using Bytes = std::array<std::int64_t, 4>;  ///< received, sent, and the payload of both

    /** False when one of the counts sinks. */
    bool enter(ApplicationId application, std::int64_t protocolClass, const Bytes& bytes) {
        Bytes& before = m_Series[{application, protocolClass}];
        Bytes& rest = m_Rest[protocolClass];
        bool grows = true;
        for (std::size_t i = 0; i < bytes.size(); ++i) {
            const std::int64_t growth = bytes[i] - before[i];
            grows = grows && growth >= 0;
            rest[i] += application == allApplications ? growth : -growth;
        }
        before = bytes;
        return grows;
    }

    /** Whether the applications add up to all, in each class. */
    bool agree() const {
        for (const auto& [protocolClass, rest] : m_Rest) {
            if (rest != Bytes{}) {
                return false;
            }
        }
        return true;
    }

  private:
    std::map<std::pair<ApplicationId, std::int64_t>, Bytes> m_Series;
    std::map<std::int64_t, Bytes> m_Rest;  ///< by class: of all, less the applications
};

/** When the totals are known next: at the end of the interval that `moment` is in. */
class KnownMoments {
  public:
    explicit KnownMoments(SQLite::Database& database) {
        SQLite::Query row(database,
                          "SELECT kept_since, thinned_tens, thinned_minutes, thinned_hours FROM counting");
        if (row.Step() == SQLite::StepResult::Row) {
            const auto moment = [&](int column) { return momentFromColumn(row.GetColumnAsInt64(column)); };
            m_KeptSince = moment(0);
            m_Grains.until = {moment(1), moment(2), moment(3)};
        }
    }

    Moment from(Moment moment) const {
        return moment <= m_KeptSince ? m_KeptSince : intervalEnd(moment, m_Grains.lengthAt(moment));
    }

  private:
    Moment m_KeptSince;
    SeriesGrains m_Grains;
};

std::string at(Moment moment) {
    return " at " + std::to_string(toColumn(moment)) + " seconds of UTC";
}

}  // namespace

std::unique_ptr<HistoryAudit> HistoryAudit::open(const std::string& path, std::string& error) {
    std::unique_ptr<HistoryAudit> audit(new HistoryAudit);
    if (!audit->m_Database.Open(path, SQLite::OpenMode::ReadOnly)) {
        error = "cannot read database " + path + ": " + audit->m_Database.GetLastError();
        return nullptr;
    }
    return audit;
}

bool HistoryAudit::fail(std::string finding) {
    m_Finding = std::move(finding);
    return false;
}

bool HistoryAudit::checkPages() {
    SQLite::Query check(m_Database, "PRAGMA integrity_check(1)");
    if (check.Step() != SQLite::StepResult::Row) {
        return fail(check.GetLastError());
    }
    const std::string result = check.GetColumnAsString(0);
    return result == "ok" || fail(result);
}

bool HistoryAudit::checkSums() {
    m_MomentCount = 0;
    // One moment of the database for all that is read.
    const bool agrees = m_Database.Execute("BEGIN") ? compareRows() : fail(m_Database.GetLastError());
    m_Database.Execute("COMMIT");
    return agrees;
}

bool HistoryAudit::compareRows() {
    const KnownMoments known(m_Database);
    SQLite::Query rows(m_Database,
                       "SELECT moment, application, class, received, sent, payload_received, payload_sent "
                       "FROM series ORDER BY moment");
    Totals totals;
    Moment moment;
    SQLite::StepResult step = rows.Step();
    for (; step == SQLite::StepResult::Row; step = rows.Step()) {
        const Moment next = known.from(momentFromColumn(rows.GetColumnAsInt64(0)));
        if (next != moment) {
            if (!totals.agree()) {
                return fail("the applications do not add up to all" + at(moment));
            }
            moment = next;
            ++m_MomentCount;
        }
        const ApplicationId application = rows.GetColumnAsInt(1);
        const auto bytes = [&](int column) { return rows.GetColumnAsInt64(column); };
        if (!totals.enter(application, bytes(2), {bytes(3), bytes(4), bytes(5), bytes(6)})) {
            return fail("application " + std::to_string(application) + " sinks" + at(moment));
        }
    }
    if (step == SQLite::StepResult::Failed) {
        return fail(rows.GetLastError());
    }
    return totals.agree() || fail("the applications do not add up to all" + at(moment));
}

}  // namespace service
