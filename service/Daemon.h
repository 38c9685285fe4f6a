// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <memory>
#include <optional>
#include <stop_token>
#include <string>

#include "service/Options.h"
#include "service/TemporaryFolder.h"
#include "service/ledger/Ledger.h"
#include "service/server/ConnectionOrders.h"
#include "service/server/EventLoop.h"
#include "service/server/HistoryCleaner.h"
#include "service/server/Poller.h"
#include "service/server/Server.h"
#include "service/server/StopSignals.h"
#include "service/server/TextOrder.h"
#include "service/settings/SettingsFile.h"
#include "service/settings/SettingsFollower.h"
#include "service/status/StatusSocket.h"
#include "service/store/HistoryReader.h"
#include "service/store/Store.h"
#include "service/store/StoreWriter.h"
#include "service/traffic/TrafficSource.h"

namespace service {

/**
 * The whole daemon: a source is polled into the ledger, the ledger's changes are written to the store, and
 * the server answers clients from both. A settings file says what is recorded and kept.
 */
class Daemon {
  public:
    /** Sets everything up and goes to work. Null with the reason in `error`. */
    static std::unique_ptr<Daemon> start(const Options& options, std::string& error);
    ~Daemon();

    Daemon(const Daemon&) = delete;
    Daemon& operator=(const Daemon&) = delete;

    /** Serves until SIGTERM, SIGINT or SIGHUP, then gives the last answers. The destructor writes what is left. */
    void serve();

  private:
    explicit Daemon(const Options& options);

    bool placeDatabase(std::string& error);
    bool openHistory(std::string& error);
    bool makeSource(const LedgerState& history, std::string& error);
    void goToWork(Listener listener);

    void stop();
    void announceNewApplications();
    void openStatus();
    std::string status() const;
    void obey(const Settings& settings, const std::stop_token& stop);

    const Options m_Options;
    std::unique_ptr<TemporaryFolder> m_TemporaryFolder;  ///< of a demo whose history is not kept
    std::string m_DatabasePath;

    // In the order of dependence: what stands below uses what stands above and goes first. The server is the
    // first to go, so that its clients learn at once that nobody answers them any more.
    EventLoop m_Loop;
    StopSignals m_StopSignals;
    TextOrder m_TextOrder;
    SettingsFile m_SettingsFile;
    std::unique_ptr<Store> m_Store;
    std::unique_ptr<HistoryReader> m_History;
    std::optional<ConnectionOrders> m_Orders;
    std::unique_ptr<Ledger> m_Ledger;
    std::unique_ptr<TrafficSource> m_Source;
    std::string m_SourceReason;
    std::optional<StoreWriter> m_Writer;
    std::optional<Poller> m_Poller;
    std::optional<SettingsFollower> m_SettingsFollower;
    std::optional<HistoryCleaner> m_Cleaner;
    std::optional<Server> m_Server;
    std::unique_ptr<StatusSocket> m_StatusSocket;
};

}  // namespace service
