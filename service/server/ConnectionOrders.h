// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <stop_token>
#include <thread>
#include <vector>

#include "service/store/HistoryReader.h"

namespace service {

/**
 * The orders of connections that the cursors of all clients have: takes them one after the other on a thread of its
 * own, since millions take seconds, and holds their ids in a limited memory, four bytes each.
 *
 * Where more is asked for than may be held, the orders that were used the longest ago are let go. Their counts are
 * known on; their rows can be had again by taking the order anew, without what is newer than it was.
 *
 * Any thread may call it.
 */
class ConnectionOrders {
  public:
    using Key = std::uint64_t;

    /** Ids that are held in all; an order that alone has more is held alone. */
    static constexpr std::size_t maxHeldIds = 12'000'000;

    explicit ConnectionOrders(std::unique_ptr<HistoryReader> history, std::size_t heldIds = maxHeldIds);

    /** Gives up what it is taking. */
    ~ConnectionOrders();

    ConnectionOrders(const ConnectionOrders&) = delete;
    ConnectionOrders& operator=(const ConnectionOrders&) = delete;

    /** Begins to take an order; `onTaken` is called on the taking thread once it is there, unless it was dropped. */
    Key take(const ConnectionQuery& query, std::function<void()> onTaken);

    /** Forgets an order and gives up taking it. */
    void drop(Key key);

    enum class State { Taking, Held, LetGo };
    State state(Key key) const;

    /** How many rows the order had when it was taken; 0 while it is being taken. */
    std::size_t count(Key key) const;

    /** Which connection stands in that row of an order that is held; nothing outside the order. */
    std::optional<ConnectionId> idAt(Key key, std::int32_t row);

    /** What to ask for so that an order that was let go comes back: nothing newer than it had. */
    ConnectionQuery queryAgain(Key key) const;

  private:
    struct Order {
        ConnectionQuery query;
        std::function<void()> onTaken;
        std::stop_source stop;
        State state = State::Taking;
        std::size_t count = 0;
        ConnectionId newest = 0;
        std::vector<ConnectionId> ids;
        std::uint64_t lastUse = 0;
    };

    void run();
    bool waitForWork(std::unique_lock<std::mutex>& lock);
    void takeNext(std::unique_lock<std::mutex>& lock);
    void keep(Key key, std::vector<ConnectionId> ids);
    void makeRoom(std::size_t count);

    const std::unique_ptr<HistoryReader> m_History;  ///< for the taking thread only
    const std::size_t m_MaxHeldIds;

    mutable std::mutex m_Mutex;  ///< guards everything below
    std::condition_variable m_Changed;
    std::map<Key, Order> m_Orders;
    std::deque<Key> m_Waiting;  ///< may hold keys of orders that were dropped
    Key m_LastKey = 0;
    std::uint64_t m_Uses = 0;
    bool m_StopRequested = false;

    std::thread m_Thread;  ///< last, because it uses all of the above
};

}  // namespace service
