// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <functional>
#include <mutex>
#include <optional>
#include <thread>

#include "service/ledger/Ledger.h"
#include "service/store/Housekeeper.h"
#include "service/store/Store.h"

namespace service {

/**
 * The one thread that writes the history: once a second it takes what changed in the ledger and appends it.
 * What the disk does not take is kept and tried again each second, so a bad disk delays the history and costs
 * none of it. What is left of a second goes to the `Housekeeper`, in steps that are short beside it.
 * The destructor writes what is left, then ends the thread.
 */
class StoreWriter {
  public:
    /**
     * Both must outlive the writer, and nobody else may use the store meanwhile. `onWipeEnded` is called on the
     * writer's thread.
     */
    StoreWriter(Ledger& ledger, Store& store, std::function<void(bool wiped)> onWipeEnded);
    ~StoreWriter();

    StoreWriter(const StoreWriter&) = delete;
    StoreWriter& operator=(const StoreWriter&) = delete;

    /** Writes at once instead of at the next second; any thread. */
    void wake();

    /**
     * Ends the clearing that has begun in the ledger, at once: erases the history on disk and then the old count,
     * or neither of them where the disk refuses. `onWipeEnded` tells which. Any thread.
     */
    void wipe();

    /**
     * How much of the past the history keeps; nothing (as it begins), or no day: all of it. What is older by the
     * history's trusted present is dropped for good, at once and then once a day, between the writes. Any thread.
     */
    void setRetention(std::optional<std::chrono::days> retention);

  private:
    void run();
    bool waitForNextTurn();
    void takeTurn();
    bool isCalled();
    void keepHouse();
    void wipeHistory();
    void writeChanges();
    void limitBacklog();
    void report(bool written);

    Ledger& m_Ledger;
    Store& m_Store;
    const std::function<void(bool wiped)> m_OnWipeEnded;

    // For the writer's thread only:
    LedgerChanges m_Backlog;    ///< taken from the ledger and not on disk yet
    bool m_Works = true;        ///< whether the last write succeeded
    std::size_t m_Dropped = 0;  ///< connections that a long failure has cost
    Housekeeper m_Housekeeper;
    std::chrono::steady_clock::time_point m_NextTurn;

    std::mutex m_Mutex;
    std::condition_variable m_Changed;
    bool m_WakeRequested = false;                                    ///< guarded by m_Mutex
    bool m_WipeRequested = false;                                    ///< guarded by m_Mutex
    bool m_StopRequested = false;                                    ///< guarded by m_Mutex
    std::optional<std::optional<std::chrono::days>> m_NewRetention;  ///< guarded by m_Mutex; taken at a turn

    std::thread m_Thread;  ///< last, because it uses all of the above
};

}  // namespace service
