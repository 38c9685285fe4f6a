// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>

#include "service/server/ConnectionOrders.h"
#include "service/server/Later.h"

namespace service {

/**
 * A filtered and sorted list of connections. It has their order only, taken when the rows are counted, so that
 * rows hold still between two counts while their values are read anew. An order that was let go for want of memory
 * is taken again at the next row, among the connections that were known before: then rows may stand where live
 * connections have come to stand by now, and what was dropped from the history is missing at the end.
 */
class ConnectionsCursor {
  public:
    /**
     * `orders` must outlive the cursor. `onTaken` is called on another thread whenever an answer that was not
     * there yet can be had. Until a filter is set the list has every connection, by id.
     */
    ConnectionsCursor(ConnectionOrders& orders, std::function<void()> onTaken);
    ~ConnectionsCursor();

    ConnectionsCursor(const ConnectionsCursor&) = delete;
    ConnectionsCursor& operator=(const ConnectionsCursor&) = delete;

    /** What follows sees the new filter and order. */
    void select(const ConnectionQuery& query);

    /** Takes the order anew; how many rows it has once it is there. */
    Later<std::size_t> count();

    /** Which connection stands in that row; nothing outside the order. */
    Later<std::optional<ConnectionId>> idAt(std::int32_t row);

  private:
    void takeOrder(const ConnectionQuery& query);
    void dropOrder();

    ConnectionOrders& m_Orders;
    const std::function<void()> m_OnTaken;
    ConnectionQuery m_Query;
    std::optional<ConnectionOrders::Key> m_Order;
    bool m_IsCounting = false;  ///< the order is the one that the last `count` began to take
};

}  // namespace service
