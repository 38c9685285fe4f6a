// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "libs/sqlite/Transaction.h"
#include "service/ledger/Records.h"
#include "service/store/Store.h"

namespace service {

/**
 * Appends any number of changes in one transaction, as a long history needs that is made at once. What is not
 * committed is undone at the end of its scope. A store has one batch at a time, and no `append` of its own
 * meanwhile.
 */
class StoreBatch {
  public:
    explicit StoreBatch(Store& store);

    StoreBatch(const StoreBatch&) = delete;
    StoreBatch& operator=(const StoreBatch&) = delete;

    /** Once this has failed everything fails: the batch can only be given up. The reason is the store's
     * `lastError`. */
    bool append(const LedgerChanges& changes);

    /** Says of the rows of the next `append` and all before it how coarse they are; otherwise every second is kept. */
    void setGrains(const SeriesGrains& grains);

    /** False when the disk would not take it: nothing of the batch is written. */
    bool commit();

  private:
    void fail();

    Store& m_Store;
    SQLite::Transaction m_Transaction;
    Store::Progress m_Progress;
    bool m_Failed = false;
};

}  // namespace service
