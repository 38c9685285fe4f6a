// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <random>
#include <vector>

#include "service/ledger/Records.h"
#include "service/store/Store.h"

/** A year with a million connections, of a few seconds to some days each, and forty applications. */
class BusyYear {
  public:
    explicit BusyYear(service::Moment present) : m_Present(present) {}

    /** Writes all of it, in steps of ten minutes and as coarse as a year should be. False with the reason in the store's `lastError`. */
    bool writeTo(service::Store& store);

    /** What moves from one moment to the next: every application in some steps only. */
    service::LedgerChanges step(service::Moment from, service::Moment to, int connectionCount);

  private:
    static constexpr int applicationCount = 40;

    void move(service::ApplicationId id);
    void connect(service::Moment start);

    const service::Moment m_Present;
    std::mt19937 m_Random{1};
    std::vector<service::ApplicationRecord> m_Applications{applicationCount};
    service::LedgerChanges m_Changes;
};
