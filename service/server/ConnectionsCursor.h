// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "service/store/HistoryReader.h"

namespace service {

/**
 * A filtered and sorted list of connections. It holds their order only, taken when the rows are counted, so
 * that rows hold still between two counts while their values are read anew.
 */
class ConnectionsCursor {
  public:
    /** `history` must outlive the cursor. Until a filter is set the list has every connection, by id. */
    explicit ConnectionsCursor(HistoryReader& history);

    /** What follows sees the new filter and order. */
    void select(const ConnectionQuery& query);

    /** Takes the order anew and returns how many rows it has. */
    std::size_t count();

    /** Which connection stands in that row; nothing outside the order. */
    std::optional<ConnectionId> idAt(std::int32_t row);

    /** Rows of which the order is in memory. */
    std::size_t heldRows() const { return m_Order.size(); }

    /** Frees the order's memory; it is taken anew when a row is asked for. */
    void letGo();

  private:
    void takeOrder();

    HistoryReader& m_History;
    ConnectionQuery m_Query;
    std::vector<ConnectionId> m_Order;
    bool m_OrderTaken = false;
};

}  // namespace service
