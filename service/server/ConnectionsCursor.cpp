// SPDX-License-Identifier: GPL-3.0-or-later
#include "service/server/ConnectionsCursor.h"

#include <chrono>
#include <utility>

namespace service {

using State = ConnectionOrders::State;

ConnectionsCursor::ConnectionsCursor(ConnectionOrders& orders, std::function<void()> onTaken)
    : m_Orders(orders), m_OnTaken(std::move(onTaken)) {
    using namespace std::chrono_literals;
    m_Query.from = Moment{};
    m_Query.to = std::chrono::sys_days{9999y / 12 / 31};
}

ConnectionsCursor::~ConnectionsCursor() {
    dropOrder();
}

void ConnectionsCursor::select(const ConnectionQuery& query) {
    m_Query = query;
    dropOrder();
}

Later<std::size_t> ConnectionsCursor::count() {
    if (!m_IsCounting) {
        takeOrder(m_Query);
        m_IsCounting = true;
    }
    if (m_Orders.state(*m_Order) == State::Taking) {
        return {};
    }
    m_IsCounting = false;
    return {.isThere = true, .value = m_Orders.count(*m_Order)};
}

Later<std::optional<ConnectionId>> ConnectionsCursor::idAt(std::int32_t row) {
    if (!m_Order) {
        takeOrder(m_Query);
    } else if (m_Orders.state(*m_Order) == State::LetGo) {
        takeOrder(m_Orders.queryAgain(*m_Order));
    }
    if (m_Orders.state(*m_Order) == State::Taking) {
        return {};
    }
    return {.isThere = true, .value = m_Orders.idAt(*m_Order, row)};
}

/** In place of the one there was, which goes first: there may not be memory for both. */
void ConnectionsCursor::takeOrder(const ConnectionQuery& query) {
    dropOrder();
    m_Order = m_Orders.take(query, m_OnTaken);
}

void ConnectionsCursor::dropOrder() {
    m_IsCounting = false;
    if (m_Order) {
        m_Orders.drop(*m_Order);
        m_Order.reset();
    }
}

}  // namespace service
