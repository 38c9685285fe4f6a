// SPDX-License-Identifier: GPL-3.0-or-later
#include "service/server/ApplicationsCursor.h"

#include <algorithm>
#include <type_traits>
#include <utility>

namespace service {

namespace {

/** Ids in the order of what `keyOf` finds in each record. Records come by id, so equal keys stay in that
 * order. */
template <class KeyOf>
std::vector<ApplicationId> sortedIds(const std::vector<ApplicationRecord>& applications,
                                     SortDirection direction, KeyOf keyOf) {
    using Key = std::invoke_result_t<KeyOf, const ApplicationRecord&>;
    std::vector<std::pair<Key, ApplicationId>> rows;
    rows.reserve(applications.size());
    for (const ApplicationRecord& application : applications) {
        rows.emplace_back(keyOf(application), application.id);
    }
    std::stable_sort(rows.begin(), rows.end(), [direction](const auto& left, const auto& right) {
        return direction == SortDirection::Descending ? right.first < left.first : left.first < right.first;
    });
    std::vector<ApplicationId> ids;
    ids.reserve(rows.size());
    for (const auto& row : rows) {
        ids.push_back(row.second);
    }
    return ids;
}

}  // namespace

void ApplicationsCursor::sortBy(ApplicationSortField field, SortDirection direction) {
    const bool ownOrder = field == ApplicationSortField::None || direction == SortDirection::None;
    m_Field = ownOrder ? ApplicationSortField::None : field;
    m_Direction = ownOrder ? SortDirection::None : direction;
    m_OrderTaken = false;
}

std::size_t ApplicationsCursor::count() {
    takeOrder();
    return m_Order.size();
}

std::optional<ApplicationId> ApplicationsCursor::idAt(std::int32_t row) {
    if (!m_OrderTaken) {
        takeOrder();
    }
    if (row < 0 || static_cast<std::size_t>(row) >= m_Order.size()) {
        return std::nullopt;
    }
    return m_Order[static_cast<std::size_t>(row)];
}

void ApplicationsCursor::takeOrder() {
    using Record = ApplicationRecord;
    const std::vector<Record> applications = m_Ledger.applications();
    const auto sortedBy = [&](auto keyOf) { return sortedIds(applications, m_Direction, keyOf); };
    m_OrderTaken = true;
    switch (m_Field) {
        case ApplicationSortField::Name:
            m_Order = sortedBy([this](const Record& record) { return m_TextOrder.sortKey(record.name); });
            return;
        case ApplicationSortField::Path:
            m_Order = sortedBy([this](const Record& record) { return m_TextOrder.sortKey(record.path); });
            return;
        case ApplicationSortField::LastActivity:
            m_Order = sortedBy([](const Record& record) { return record.lastSeen; });
            return;
        case ApplicationSortField::ReceivedBytes:
            m_Order = sortedBy([](const Record& record) { return record.counters.total().received; });
            return;
        case ApplicationSortField::SentBytes:
            m_Order = sortedBy([](const Record& record) { return record.counters.total().sent; });
            return;
        case ApplicationSortField::None:
            break;
    }
    m_Order = sortedBy([](const Record& record) { return record.id; });
}

}  // namespace service
