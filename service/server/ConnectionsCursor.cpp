// SPDX-License-Identifier: GPL-3.0-or-later
#include "service/server/ConnectionsCursor.h"

#include <chrono>

namespace service {

ConnectionsCursor::ConnectionsCursor(HistoryReader& history) : m_History(history) {
    using namespace std::chrono_literals;
    m_Query.from = Moment{};
    m_Query.to = std::chrono::sys_days{9999y / 12 / 31};
}

void ConnectionsCursor::select(const ConnectionQuery& query) {
    m_Query = query;
    letGo();
}

std::size_t ConnectionsCursor::count() {
    takeOrder();
    return m_Order.size();
}

std::optional<ConnectionId> ConnectionsCursor::idAt(std::int32_t row) {
    if (!m_OrderTaken) {
        takeOrder();
    }
    if (row < 0 || static_cast<std::size_t>(row) >= m_Order.size()) {
        return std::nullopt;
    }
    return m_Order[static_cast<std::size_t>(row)];
}

void ConnectionsCursor::letGo() {
    m_Order = {};
    m_OrderTaken = false;
}

void ConnectionsCursor::takeOrder() {
    m_Order = m_History.connections(m_Query);
    m_OrderTaken = true;
}

}  // namespace service
