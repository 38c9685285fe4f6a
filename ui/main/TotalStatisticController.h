// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <memory>

#include "daemon/TotalStatisticInfo.h"

/** Keeps the sums over all applications that the window shows. Main thread. */
class TotalStatisticController {
  public:
    /** Fetches the first record. */
    TotalStatisticController();

    /** Fetches a new record; the old one goes also when that fails. */
    void updateTotalStatistic();

    /** The record fetched last; null when that failed. */
    std::shared_ptr<const TotalStatisticInfo> totalStatisticInfo() const { return m_Info; }

  private:
    std::shared_ptr<const TotalStatisticInfo> m_Info;
};
