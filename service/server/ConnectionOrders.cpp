// SPDX-License-Identifier: GPL-3.0-or-later
#include "service/server/ConnectionOrders.h"

#include <algorithm>
#include <utility>

namespace service {

ConnectionOrders::ConnectionOrders(std::unique_ptr<HistoryReader> history, std::size_t heldIds)
    : m_History(std::move(history)), m_MaxHeldIds(heldIds), m_Thread([this] { run(); }) {}

ConnectionOrders::~ConnectionOrders() {
    {
        const std::lock_guard lock(m_Mutex);
        m_StopRequested = true;
        for (auto& [key, order] : m_Orders) {
            order.stop.request_stop();
        }
    }
    m_Changed.notify_one();
    m_Thread.join();
}

ConnectionOrders::Key ConnectionOrders::take(const ConnectionQuery& query, std::function<void()> onTaken) {
    const std::lock_guard lock(m_Mutex);
    const Key key = ++m_LastKey;
    Order& order = m_Orders[key];
    order.query = query;
    order.onTaken = std::move(onTaken);
    m_Waiting.push_back(key);
    m_Changed.notify_one();
    return key;
}

void ConnectionOrders::drop(Key key) {
    std::map<Key, Order>::node_type dropped;  // goes after the lock: to free millions of ids takes a while
    const std::lock_guard lock(m_Mutex);
    dropped = m_Orders.extract(key);
    if (!dropped.empty()) {
        dropped.mapped().stop.request_stop();
    }
}

ConnectionOrders::State ConnectionOrders::state(Key key) const {
    const std::lock_guard lock(m_Mutex);
    return m_Orders.at(key).state;
}

std::size_t ConnectionOrders::count(Key key) const {
    const std::lock_guard lock(m_Mutex);
    return m_Orders.at(key).count;
}

std::optional<ConnectionId> ConnectionOrders::idAt(Key key, std::int32_t row) {
    const std::lock_guard lock(m_Mutex);
    Order& order = m_Orders.at(key);
    order.lastUse = ++m_Uses;
    if (row < 0 || static_cast<std::size_t>(row) >= order.ids.size()) {
        return std::nullopt;
    }
    return order.ids[static_cast<std::size_t>(row)];
}

ConnectionQuery ConnectionOrders::queryAgain(Key key) const {
    const std::lock_guard lock(m_Mutex);
    const Order& order = m_Orders.at(key);
    ConnectionQuery query = order.query;
    query.newest = order.newest;
    return query;
}

void ConnectionOrders::run() {
    std::unique_lock lock(m_Mutex);
    while (true) {
        m_Changed.wait(lock, [this] { return m_StopRequested || !m_Waiting.empty(); });
        if (m_StopRequested) {
            return;
        }
        takeNext(lock);
    }
}

/** Without the lock while it reads. */
void ConnectionOrders::takeNext(std::unique_lock<std::mutex>& lock) {
    const Key key = m_Waiting.front();
    m_Waiting.pop_front();
    const auto order = m_Orders.find(key);
    if (order == m_Orders.end()) {
        return;
    }
    const ConnectionQuery query = order->second.query;
    const std::stop_token stop = order->second.stop.get_token();
    lock.unlock();
    std::vector<ConnectionId> ids =
        m_History->connections(query, stop, [this](std::size_t count) { makeRoom(count); });
    keep(key, std::move(ids));
    lock.lock();
}

void ConnectionOrders::keep(Key key, std::vector<ConnectionId> ids) {
    const ConnectionId newest = ids.empty() ? 0 : *std::ranges::max_element(ids);
    std::function<void()> onTaken;
    {
        const std::lock_guard lock(m_Mutex);
        const auto found = m_Orders.find(key);
        if (found == m_Orders.end()) {
            return;
        }
        Order& order = found->second;
        order.state = State::Held;
        order.count = ids.size();
        order.newest = newest;
        order.ids.swap(ids);
        order.lastUse = ++m_Uses;
        onTaken = std::move(order.onTaken);
    }
    onTaken();
}

/** Lets go of orders until `count` more ids fit. */
void ConnectionOrders::makeRoom(std::size_t count) {
    std::vector<std::vector<ConnectionId>> freed;  // after the lock, as in `drop`
    const std::lock_guard lock(m_Mutex);
    std::vector<Order*> held;
    for (auto& [key, order] : m_Orders) {
        count += order.ids.size();
        if (!order.ids.empty()) {
            held.push_back(&order);
        }
    }
    if (count <= m_MaxHeldIds) {
        return;
    }
    std::ranges::sort(held, {}, &Order::lastUse);
    for (auto order = held.begin(); order != held.end() && count > m_MaxHeldIds; ++order) {
        count -= (*order)->ids.size();
        (*order)->state = State::LetGo;
        freed.push_back(std::exchange((*order)->ids, {}));
    }
}

}  // namespace service
