// SPDX-License-Identifier: GPL-3.0-or-later
#include "service/Daemon.h"

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <iterator>
#include <system_error>
#include <utility>

#include "service/DefaultDatabase.h"
#include "service/demo/DemoHistory.h"
#include "service/demo/DemoSource.h"
#include "service/log/Log.h"
#include "service/status/StatusText.h"
#include "service/traffic/Clock.h"

namespace service {

namespace {

/** Of a history on disk, with what waits in its log. */
std::uintmax_t databaseBytes(const std::string& path) {
    std::uintmax_t sum = 0;
    for (const char* const part : {"", "-wal", "-shm"}) {
        std::error_code missing;
        const std::uintmax_t size = std::filesystem::file_size(path + part, missing);
        sum += missing ? 0 : size;
    }
    return sum;
}

}  // namespace

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
    const auto status = std::filesystem::status(m_DatabasePath, ignored);
    if (std::filesystem::path(m_DatabasePath).filename().empty() ||
        (std::filesystem::exists(status) && !std::filesystem::is_regular_file(status))) {
        error = "the history needs a file, which " + m_DatabasePath + " is not";
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
    if (!makeSource(*state, error)) {
        return false;
    }
    m_Ledger = std::make_unique<Ledger>(std::move(*state), m_SettingsFile.read().rule());
    m_History = HistoryReader::open(m_DatabasePath, error);
    auto readerOfOrders = HistoryReader::open(m_DatabasePath, error);
    if (!m_History || !readerOfOrders) {
        return false;
    }
    m_Orders.emplace(std::move(readerOfOrders));
    return true;
}

bool Daemon::makeSource(const LedgerState& history, std::string& error) {
    if (m_Options.demo) {
        m_Source = std::make_unique<DemoSource>(DemoScene::here(systemClock()), history.applications);
        m_SourceReason = "it was asked for";
        return true;
    }
    CaptureChoice choice = makeCaptureSource(m_Options.capture.value_or(CaptureMode::Auto));
    m_Source = std::move(choice.source);
    (m_Source ? m_SourceReason : error) = choice.reason;
    return m_Source != nullptr;
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
    openStatus();
    logLine("listening on ", address, ", source ", m_Source->name(), ", history in ", m_DatabasePath);
}

void Daemon::openStatus() {
    std::string error;
    m_StatusSocket = StatusSocket::open(
        m_Loop, m_DatabasePath, [this] { return status(); }, error);
    if (!m_StatusSocket) {
        logLine("--status does not find this daemon: ", error);
    }
}

std::string Daemon::status() const {
    std::vector<StatusLine> lines{
        {"source", std::string(m_Source->name()) + ", because: " + m_SourceReason},
        {"clients", std::to_string(m_Server->clientCount())},
        {"history", m_DatabasePath + ", " + std::to_string(databaseBytes(m_DatabasePath)) + " bytes"}};
    std::ranges::move(m_Source->status(), std::back_inserter(lines));
    return statusText(lines);
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
