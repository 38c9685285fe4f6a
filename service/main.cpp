// SPDX-License-Identifier: GPL-3.0-or-later
#include <fcntl.h>
#include <malloc.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <iostream>

#include "service/Daemon.h"
#include "service/DefaultDatabase.h"
#include "service/Options.h"
#include "service/log/Log.h"
#include "service/status/StatusQuery.h"

namespace {

/** Fills closed standard descriptors, lest a database or a client gets the number that the log writes to. */
void openStandardDescriptors() {
    int descriptor = STDIN_FILENO;
    while (descriptor >= 0 && descriptor <= STDERR_FILENO) {
        descriptor = ::open("/dev/null", O_RDWR);
    }
    ::close(descriptor);
}

/** Long lists of connections and what sorts them: their memory goes back to the system when they go. */
constexpr int ownMappingBytes = 1 << 20;

/** Runs the daemon until it is told to stop; returns the process's exit status. */
int serve(const service::Options& options) {
    std::signal(SIGPIPE, SIG_IGN);  // a log that nobody reads any more must not end the daemon
    ::umask(077);                   // whom a user talks to is nobody else's business
    ::mallopt(M_MMAP_THRESHOLD, ownMappingBytes);
    service::StopSignals::block();
    std::string error;
    std::unique_ptr<service::Daemon> daemon = service::Daemon::start(options, error);
    if (!daemon) {
        service::logLine(error);
        return 1;
    }
    daemon->serve();
    daemon.reset();
    service::logLine("stopped");
    return 0;
}

int showStatus(const service::Options& options) {
    const std::string path =
        options.database.empty() ? service::defaultDatabasePath().value_or("") : options.database;
    std::string error;
    const std::optional<std::string> status = service::queryStatus(path, error);
    if (!status) {
        std::cerr << "nevtora-daemon: " << error << "\n";
        return 1;
    }
    std::cout << *status;
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    openStandardDescriptors();
    using Action = service::CommandLine::Action;
    const service::CommandLine line = service::parseCommandLine({argv + 1, argv + argc});
    switch (line.action) {
        case Action::Serve:
            return serve(line.options);
        case Action::ShowStatus:
            return showStatus(line.options);
        case Action::ShowHelp:
            std::cout << service::usage();
            return 0;
        case Action::ShowVersion:
            std::cout << "nevtora-daemon " NEVTORA_VERSION "\n";
            return 0;
        case Action::ShowError:
            break;
    }
    std::cerr << "nevtora-daemon: " << line.error << "\nTry: nevtora-daemon --help\n";
    return 2;
}
