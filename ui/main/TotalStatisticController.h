// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <memory>

#include "daemon/TotalStatisticInfo.h"

class QWidget;

namespace Ui {
class TotalsPanel;
}

/** Shows the sums over all applications in a panel and keeps them for the table's first row. Main thread. */
class TotalStatisticController {
  public:
    /** Fetches the first record, lays the labels out in `panel`, which must outlive this object, and fills
     * them. */
    explicit TotalStatisticController(QWidget& panel);
    ~TotalStatisticController();

    TotalStatisticController(const TotalStatisticController&) = delete;
    TotalStatisticController& operator=(const TotalStatisticController&) = delete;

    /** Fetches a new record; when that fails the old one goes nevertheless, and the texts stay. */
    void updateTotalStatistic();

    /** The record fetched last; null when that failed. */
    std::shared_ptr<const TotalStatisticInfo> totalStatisticInfo() const { return m_Info; }

  private:
    void fetch();

    const std::unique_ptr<Ui::TotalsPanel> m_Outlets;
    std::shared_ptr<const TotalStatisticInfo> m_Info;
};
