// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "service/ledger/Ledger.h"
#include "service/server/TextOrder.h"
#include "service/store/connections/ConnectionQuery.h"

namespace service {

/** What a list of applications is sorted by. On the wire: never renumber. */
enum class ApplicationSortField : std::int32_t {
    Name = 0,
    Path = 1,
    LastActivity = 2,
    ReceivedBytes = 3,
    SentBytes = 4,
    None = 5,  ///< the daemon's own order, by id
};

/**
 * A sorted list of the applications. It holds their order only, taken when the rows are counted, so that rows
 * hold still between two counts while their values are read from the ledger.
 */
class ApplicationsCursor {
  public:
    /** Both must outlive the cursor. */
    ApplicationsCursor(const Ledger& ledger, const TextOrder& textOrder)
        : m_Ledger(ledger), m_TextOrder(textOrder) {}

    /** What follows sees the new order. Equal rows stand in the order of their ids, in either direction. */
    void sortBy(ApplicationSortField field, SortDirection direction);

    /** Takes the order anew and returns how many rows it has. */
    std::size_t count();

    /** Which application stands in that row; nothing outside the order. */
    std::optional<ApplicationId> idAt(std::int32_t row);

  private:
    void takeOrder();

    const Ledger& m_Ledger;
    const TextOrder& m_TextOrder;
    ApplicationSortField m_Field = ApplicationSortField::None;
    SortDirection m_Direction = SortDirection::None;
    std::vector<ApplicationId> m_Order;
    bool m_OrderTaken = false;
};

}  // namespace service
