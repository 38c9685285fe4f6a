// SPDX-License-Identifier: GPL-3.0-or-later
#include "service/Daemon.h"

#include <filesystem>
#include <functional>
#include <system_error>
#include <utility>

#include "service/DefaultDatabase.h"
#include "service/demo/DemoHistory.h"
#include "service/demo/DemoSource.h"
#include "service/log/Log.h"
#include "service/traffic/Clock.h"

namespace service {

std::unique_ptr<Daemon> Daemon::start(const Options& options, std::string& error) {
    std::optional<Listener> listener =
        Listener::open(options.listen, error);  // first: fails where another one runs
    if (!listener) {
        return nullptr;
    }
    std::unique_ptr<Daemon> daemon(new Daemon(options));
    if (!daemon->placeDatabase(error) || !daemon->openHistory(error)) {
        return nullptr;
    }
    daemon->goToWork(std::move(*listener));
    return daemon;
}

Daemon::Daemon(const Options& options)
    : m_Options(options),
      m_StopSignals(m_Loop, [this] { stop(); }),
      m_SettingsFile(options.config.empty() ? defaultSettingsFile() : options.config) {}

Daemon::~Daemon() = default;

bool Daemon::placeDatabase(std::string& error) {
    if (m_Options.demo && m_Options.database.empty()) {
        m_TemporaryFolder = TemporaryFolder::make(error);
        m_DatabasePath = m_TemporaryFolder ? m_TemporaryFolder->path() + "/history.sqlite" : "";
        return m_TemporaryFolder != nullptr;
    }
    if (m_Options.database.empty() && !defaultDatabasePath()) {
        error = "neither XDG_DATA_HOME nor HOME tells where the history lies: name it with --database";
        return false;
    }
    m_DatabasePath = m_Options.database.empty() ? *defaultDatabasePath() : m_Options.database;
    std::error_code ignored;
    if (std::filesystem::path(m_DatabasePath).filename().empty() ||
        std::filesystem::is_directory(m_DatabasePath, ignored)) {
        error = "the history needs a file, not the folder " + m_DatabasePath;
        return false;
    }
    return makeFolderOf(m_DatabasePath, error);
}

bool Daemon::openHistory(std::string& error) {
    m_Store = Store::open(m_DatabasePath, error);
    if (!m_Store) {
        return false;
    }
    if (m_Options.demo && !writeDemoHistory(*m_Store, DemoScene::here(systemClock()))) {
        error = "cannot write the demo's history: " + m_Store->lastError();
        return false;
    }
    std::optional<LedgerState> state = m_Store->load(systemClock());
    if (!state) {
        error = "cannot read the history: " + m_Store->lastError();
        return false;
    }
    m_Source = makeSource(*state, error);
    m_Ledger = std::make_unique<Ledger>(std::move(*state), m_SettingsFile.read().rule());
    m_History = HistoryReader::open(m_DatabasePath, error);
    auto readerOfOrders = HistoryReader::open(m_DatabasePath, error);
    if (!m_Source || !m_History || !readerOfOrders) {
        return false;
    }
    m_Orders.emplace(std::move(readerOfOrders));
    return true;
}

std::unique_ptr<TrafficSource> Daemon::makeSource(const LedgerState& history, std::string& error) const {
    if (m_Options.demo) {
        return std::make_unique<DemoSource>(DemoScene::here(systemClock()), history.applications);
    }
    return makeCaptureSource(m_Options.capture.value_or(CaptureMode::Auto), error);
}

void Daemon::goToWork(Listener listener) {
    const std::string address = listener.address().text();
    const auto cleaned = [this](bool wiped) { m_Loop.post([this, wiped] { m_Cleaner->finish(wiped); }); };
    const auto polled = [this] {
        m_Writer->wake();  // so that what a kill costs is never older than the poll before
        m_Loop.post([this] { announceNewApplications(); });
    };
    m_Cleaner.emplace(*m_Ledger, HistoryCleaner::Hooks{
                                     .now = systemClock,
                                     .wipe = [this] { m_Writer->wipe(); },
                                     .tellClients = [this](DaemonEvent event) { m_Server->broadcast(event); },
                                 });
    m_Server.emplace(m_Loop, std::move(listener),
                     SessionContext{.ledger = *m_Ledger,
                                    .history = *m_History,
                                    .orders = *m_Orders,
                                    .cleaner = *m_Cleaner,
                                    .textOrder = m_TextOrder,
                                    .now = systemClock,
                                    .configurationChanged = [this] { m_SettingsFollower->noteChange(); }});
    m_Writer.emplace(*m_Ledger, *m_Store, cleaned);
    m_Writer->setRetention(m_SettingsFile.inForce().retention());
    m_Poller.emplace(*m_Source, *m_Ledger, polled);
    m_SettingsFollower.emplace(m_SettingsFile, std::bind_front(&Daemon::obey, this));
    logLine("listening on ", address, ", source ", m_Source->name(), ", history in ", m_DatabasePath);
}

void Daemon::serve() {
    m_Loop.run();
}

void Daemon::stop() {
    logLine("told to stop");
    m_Server->drain([this] { m_Loop.stop(); });
}

void Daemon::announceNewApplications() {
    for (const ApplicationId id : m_Ledger->takeNewApplications()) {
        m_Server->broadcast(DaemonEvent::ApplicationAdded, id);
    }
}

void Daemon::obey(const Settings& settings, const std::stop_token& stop) {
    m_Writer->setRetention(settings.retention());
    RecordingRule rule = settings.rule(stop);
    if (!stop.stop_requested()) {
        m_Ledger->setRule(std::move(rule));
        m_Poller->wake();
    }
}

}  // namespace service
